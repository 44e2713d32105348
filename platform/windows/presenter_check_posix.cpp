#include "platform/windows/presenter_check.h"
#include "platform/windows/presenter_program.h"
#include "platform/windows/presenter_spawn.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>

namespace tarnel {
namespace {

/// What has been written so far, in one line: each stretch of blanks becomes one.
std::string words_in(const Descriptor& pipe) {
    std::array<char, 4096> block;
    const auto count =
        retry_on_signal([&] { return ::read(pipe.get(), block.data(), block.size()); });
    std::string words;
    for (const char letter : std::string(block.data(), count > 0 ? std::size_t(count) : 0)) {
        if (letter != ' ' && letter != '\n') {
            words += letter;
        } else if (!words.empty() && words.back() != ' ') {
            words += ' ';
        }
    }
    return words.substr(0, words.find_last_not_of(' ') + 1);
}

} // namespace

std::string presenter_fault() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        return "the system has no descriptors left";
    }
    const Descriptor to_read(ends[0]);
    const Descriptor to_write(ends[1]);
    std::string fault;
    const auto program = PresenterProgram::start(fault, to_write.get());
    if (program && !program->is_awake()) {
        program->kill();
        fault = presenter_path() + " ends at once, or does not answer";
    }
    const std::string words = fault.empty() ? "" : words_in(to_read);
    return words.empty() ? fault : fault + ": " + words;
}

} // namespace tarnel
