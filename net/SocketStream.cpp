#include "net/SocketStream.h"

#include "platform/base/exceptions.h"

namespace tarnel {

void SocketStream::close() {
    for (CArchive* const archive : {&sending, &receiving}) {
        try {
            archive->Close();
        } catch (CException* exception) {
            // Nobody is left to be told: the peer is gone, or input was left over.
            exception->Delete();
            archive->Abort();
        }
    }
}

} // namespace tarnel
