#include "tools/pseudo_terminal.h"
#include "tools/recording.h"
#include "tools/stop_signal.h"
#include "tools/verbs.h"
#include "tools/waiting.h"

#include <fmt/format.h>

#include <charconv>
#include <system_error>

// `tarnel replay` plays a recording at a port of its own.

namespace {

constexpr int exit_no_recording = 2;
constexpr int exit_bad_speed = 3;
constexpr int exit_no_line = 4;

struct Arguments {
    std::string file;
    std::string speed = "1";
    std::string link;
};

struct Played {
    std::size_t bytes = 0;
    std::size_t breaks = 0;
    std::size_t breaks_left_out = 0;
};

/// 0 for "max".
double parse_speed(const std::string& text) {
    double speed = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, speed);
    if (text != "max" && (result.ec != std::errc() || result.ptr != end ||
                          !(speed >= 0.001 && speed <= 1'000'000))) {
        fail(exit_bad_speed,
             fmt::format("'{}' is no speed: 0.001 to 1000000 times as fast, or 'max'.", text));
    }
    return speed;
}

/// Finds what is damaged before anything is played.
void check(const std::string& file) {
    RecordingReader recording(file);
    while (recording.next()) {
    }
    if (recording.was_cut()) {
        fmt::print(stderr, "{} was cut in the middle of its last block.\n", file);
    }
}

bool play(const RecordedBlock& block, PseudoTerminal& line, bool has_link, Played& played) {
    if (!block.is_break) {
        played.bytes += block.bytes.size();
        return line.send(block.bytes);
    }
    if (!has_link) {
        ++played.breaks_left_out;
        return true;
    }
    ++played.breaks;
    if (!line.drain()) {
        return false;
    }
    line.replug();
    return line.wait_for_listener();
}

Played play_all(RecordingReader& recording, PseudoTerminal& line, double speed, int stop,
                bool has_link) {
    Played played;
    bool goes_on = line.wait_for_listener();
    const Deadline start = std::chrono::steady_clock::now();
    while (goes_on) {
        const std::optional<RecordedBlock> block = recording.next();
        if (!block) {
            line.drain();
            break;
        }
        const double later = speed > 0 ? static_cast<double>(block->microseconds) / speed : 0;
        const std::chrono::duration<double, std::micro> time(later);
        goes_on =
            (speed == 0 || pause_until(stop, start + round<std::chrono::nanoseconds>(time))) &&
            play(*block, line, has_link, played);
    }
    return played;
}

void replay(const Arguments& arguments) {
    const StopSignal stop;
    const double speed = parse_speed(arguments.speed);
    try {
        check(arguments.file);
        RecordingReader recording(arguments.file);
        PseudoTerminal line(arguments.link, stop.descriptor());
        fmt::print("{}\n", line.port());
        std::fflush(stdout);
        fmt::print(stderr, "Plays {} as soon as somebody listens; recorded: {} {}\n",
                   arguments.file, recording.header().protocol, recording.header().port);
        const Played played =
            play_all(recording, line, speed, stop.descriptor(), !arguments.link.empty());
        fmt::print(stderr, "{} bytes, {} breaks of the line played\n", played.bytes, played.breaks);
        if (played.breaks_left_out > 0) {
            fmt::print(stderr, "{} breaks of the line left out: they need a --link\n",
                       played.breaks_left_out);
        }
    } catch (const std::system_error& error) {
        fail(exit_no_line, error.what());
    } catch (const std::runtime_error& error) {
        fail(exit_no_recording, error.what());
    }
}

} // namespace

void add_replay_verb(CLI::App& tool) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* verb = tool.add_subcommand("replay", "Play a recording, at a port of its own");
    verb->add_option("FILE", arguments->file, "The recording")->required();
    verb->add_option("--speed", arguments->speed, "How many times as fast as it was, or 'max'")
        ->capture_default_str();
    verb->add_option("--link", arguments->link, "A symbolic link to make, as a name that stays");
    verb->footer(
        "Prints the port to connect to, waits until it is opened, and at the end until all "
        "has been read.\nCtrl+C ends it at once.\n"
        "Example: tarnel replay morning.rec --speed 10 --link ./machine\n"
        "Exit codes: 0 done, 2 no recording, or a damaged one, 3 no such speed, 4 no line "
        "or link");
    verb->callback([arguments] { replay(*arguments); });
}
