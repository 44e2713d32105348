#include "tools/scripted_machine.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <system_error>

ScriptedMachine::ScriptedMachine()
    : line_(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
    std::array<char, 64> name{};
    termios settings{};
    if (line_ < 0 || ::grantpt(line_) != 0 || ::unlockpt(line_) != 0 ||
        ::ptsname_r(line_, name.data(), name.size()) != 0 || ::tcgetattr(line_, &settings) != 0) {
        throw std::system_error(errno, std::generic_category(), "no pseudo terminal");
    }
    ::cfmakeraw(&settings);
    ::tcsetattr(line_, TCSANOW, &settings);
    port_ = name.data();
    thread_ = std::thread([this] { play(); });
}

ScriptedMachine::~ScriptedMachine() {
    stop_ = true;
    thread_.join();
    ::close(line_);
}

void ScriptedMachine::play() const {
    using namespace std::chrono_literals;
    constexpr std::array<std::string_view, 4> records = {
        "+0012345 -0000678 +0004200 +0012345 -0000678 +0005200\r",
        "+0013345 -0000678 +0004200 +0013345 -0000678 +0005200\r",
        "+0013345 -0001678 +0004199 +0013345 -0001678 +0005199\r",
        "+0012345 -0001678 +0004201 +0012345 -0001678 +0005201\r"};
    for (std::size_t i = 0; !stop_; ++i) {
        const std::string_view record = records[i % records.size()];
        if (::write(line_, record.data(), record.size()) < 0) {
            return; // nobody reads
        }
        std::this_thread::sleep_for(200ms);
    }
}
