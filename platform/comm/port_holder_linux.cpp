#include "platform/comm/folder.h"
#include "platform/comm/port_holder.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <charconv>

namespace tarnel {

namespace {

struct DeviceNumber {
    unsigned major = 0;
    unsigned minor = 0;

    friend bool operator==(const DeviceNumber&, const DeviceNumber&) = default;
};

/// Which device `file` leads to; 0:0 when none.
DeviceNumber device_number(const std::string& file) {
    struct statx status;
    // Asks no file server: a look at somebody's open file must not hang on the network.
    constexpr int flags = AT_STATX_DONT_SYNC | AT_NO_AUTOMOUNT;
    if (::statx(AT_FDCWD, file.c_str(), flags, STATX_TYPE, &status) < 0 ||
        !S_ISCHR(status.stx_mode)) {
        return {};
    }
    return {status.stx_rdev_major, status.stx_rdev_minor};
}

std::string program_of(const std::string& process) {
    std::string program = first_line("/proc/" + process + "/comm");
    std::replace_if(
        program.begin(), program.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return program;
}

} // namespace

std::vector<PortHolder> port_holders(const std::string& device) {
    std::vector<PortHolder> holders;
    const DeviceNumber wanted = device_number(device);
    if (wanted == DeviceNumber{}) {
        return holders;
    }
    for (const std::string& process : names_in("/proc")) {
        int number = 0;
        const char* end = process.data() + process.size();
        if (std::from_chars(process.data(), end, number).ptr != end) {
            continue;
        }
        const std::string folder = "/proc/" + process + "/fd/";
        const std::vector<std::string> open_files = names_in(folder);
        if (std::any_of(open_files.begin(), open_files.end(), [&](const std::string& name) {
                return device_number(folder + name) == wanted;
            })) {
            holders.push_back({number, program_of(process)});
        }
    }
    return holders;
}

} // namespace tarnel
