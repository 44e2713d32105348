#include "platform/files/file_sharing.h"
#include "tools/doctor.h"

#include <unistd.h>

namespace {

constexpr const char* service = "waiting for files";

} // namespace

/// Whether a file is still written: the system tells it of the user's own files, of all to root.
Diagnosis examine_files() {
    Diagnosis diagnosis;
    if (!tarnel::system_tells_of_writers()) {
        diagnosis.add(
            Level::warning,
            "The system grants no leases: who writes a file is seen in /proc alone, and "
            "only of programs that you may see.",
            "Wait for files as root, or have the writer rename them when they are complete");
        diagnosis.works(service, "by what /proc shows");
    } else {
        diagnosis.add(Level::ok,
                      ::geteuid() == 0
                          ? "The system tells who writes a file."
                          : "The system tells who writes a file of yours; another user's is "
                            "complete when it stands still.");
        diagnosis.works(service);
    }
    return diagnosis;
}
