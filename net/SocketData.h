#pragma once

#include "core/export.h"
#include "platform/base/object.h"

/// What the TCP sockets carry: an object that writes itself to an archive over the connection and
/// reads itself from one. It serves one message after the other, on the socket's thread.
class TARNEL_API CSocketData : public CObject {
    DECLARE_DYNAMIC(CSocketData)

    CSocketData();
    ~CSocketData() override;

    using CObject::Dump;

    /// Writes the message to an archive that stores, or consumes input from one that loads. Nonzero
    /// when a whole message has been written or received. What the archive throws passes through.
    virtual int Serialise(CArchive& ar) = 0;

    /// For tracing: called right before the message is sent (0), and when it was received and is
    /// taken as a reply or handled while a reply is awaited (1). The result is not used.
    virtual int Dump(int bReceived) const;

    /// Puts a copy on the heap, for the caller to delete, into `pCopy`, which comes as null. The
    /// base makes none: messages of such a class cannot be kept for later.
    virtual void Clone(CSocketData*& pCopy);
};
