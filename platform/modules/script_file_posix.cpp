#include "platform/base/descriptor.h"
#include "platform/base/last_error.h"
#include "platform/base/system_error.h"
#include "platform/modules/rc_parser.h"
#include "platform/modules/script_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace tarnel {

namespace {

/// Fills `text` as far as the file goes; false on an error.
bool read_all(int file, std::string& text) {
    std::size_t size = 0;
    while (size < text.size()) {
        const auto count =
            retry_on_signal([&] { return ::read(file, text.data() + size, text.size() - size); });
        if (count < 0) {
            return false;
        }
        if (count == 0) {
            break;
        }
        size += static_cast<std::size_t>(count);
    }
    text.resize(size);
    return true;
}

} // namespace

ScriptFile read_script_file(const std::string& path) {
    // Non-blocking, so that a pipe without a writer does not hold the caller.
    const Descriptor file(
        retry_on_signal([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); }));
    struct stat status;
    if (!file || ::fstat(file.get(), &status) < 0) {
        return {error_from_errno(errno), {}};
    }
    if (!S_ISREG(status.st_mode)) {
        return {ERROR_ACCESS_DENIED, {}};
    }
    const auto size = std::min(static_cast<std::size_t>(status.st_size), longest_script + 1);
    std::string text(size, '\0');
    if (!read_all(file.get(), text)) {
        return {error_from_errno(errno), {}};
    }
    return {ERROR_SUCCESS, std::move(text)};
}

} // namespace tarnel
