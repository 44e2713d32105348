#include "tools/simulated_machine.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <system_error>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// Draws a number from `least` to `most`.
template <typename Number>
Number draw(Number least, Number most, std::mt19937& random) {
    return std::uniform_int_distribution<Number>(least, most)(random);
}

std::string_view name(std::optional<Fault> fault) {
    return fault ? fault_names[static_cast<std::size_t>(*fault)] : "";
}

std::ofstream open_truth(const std::string& path) {
    std::ofstream file;
    if (!path.empty()) {
        file.open(path);
        if (!file) {
            throw std::system_error(errno, std::generic_category(), path);
        }
        file << "record,fault,number,x,y,z,x2,y2,z2,sent_ns\n";
    }
    return file;
}

} // namespace

SimulatedMachine::SimulatedMachine(Simulation simulation, int stop)
    : simulation_(std::move(simulation)), stop_(stop), line_(simulation_.link, stop),
      part_(simulation_.shape, simulation_.seed), random_(simulation_.seed),
      truth_(open_truth(simulation_.truth)), next_number_(simulation_.kind->first_number) {}

void SimulatedMachine::run() {
    bool goes_on = line_.wait_for_listener();
    const std::chrono::duration<double> period(simulation_.rate > 0 ? 1 / simulation_.rate : 0);
    Deadline next = Clock::now();
    while (goes_on && records_ < simulation_.count) {
        goes_on = measure();
        if (goes_on && simulation_.rate > 0) {
            next += std::chrono::duration_cast<Clock::duration>(period);
            goes_on = pause_until(stop_, next);
        }
    }
    if (goes_on) {
        note_unfinished();
        line_.drain();
    }
    truth_.flush();
}

/// Measures a point and sends it, unless it goes with those after it; false when it is to stop.
bool SimulatedMachine::measure() {
    MachineRecord record = simulation_.kind->record(part_.next(), simulation_.line_end);
    const std::optional<Fault> fault = draw_fault();
    damage(fault, record.text);
    ++records_;
    note(fault, record);
    waiting_ += record.text;
    merging_ = fault == Fault::merge ? draw(1, 8, random_) : std::max(0, merging_ - 1);
    return (merging_ > 0 && records_ < simulation_.count) || deliver(fault);
}

/// Nothing happens to a record that others wait for, nor to the last one.
std::optional<Fault> SimulatedMachine::draw_fault() {
    const std::vector<Fault>& faults = simulation_.faults;
    constexpr int one_in = 20;
    if (faults.empty() || !rows_.empty() || records_ + 1 == simulation_.count ||
        draw(1, one_in, random_) > 1) {
        return std::nullopt;
    }
    return faults[draw<std::size_t>(0, faults.size() - 1, random_)];
}

void SimulatedMachine::damage(std::optional<Fault> fault, std::string& text) {
    if (fault == Fault::flip) {
        simulation_.kind->flip(text, random_);
    } else if (fault == Fault::cut) {
        simulation_.kind->cut(text, random_);
    } else if (fault == Fault::flood) {
        text.insert(0, noise_burst(random_));
    }
}

Outcome SimulatedMachine::outcome(std::optional<Fault> fault) const {
    if (swallows_ || fault == Fault::unplug) {
        return Outcome::nothing;
    }
    return fault == Fault::flip || fault == Fault::cut
               ? simulation_.kind->damaged()
               : simulation_.kind->whole(simulation_.line_end);
}

void SimulatedMachine::note(std::optional<Fault> fault, const MachineRecord& record) {
    const Outcome result = outcome(fault);
    Row row{records_, swallows_ ? "swallowed" : name(fault), std::nullopt, record.values};
    if (result != Outcome::nothing) {
        row.number = next_number_++;
    }
    rows_.push_back(row);
    swallows_ = result == Outcome::point_with_next;
}

/// Sends what waits.
bool SimulatedMachine::deliver(std::optional<Fault> fault) {
    const bool in_parts = fault == Fault::split || fault == Fault::unplug;
    if (!(in_parts ? send_in_parts(fault == Fault::unplug) : transmit(waiting_))) {
        return false;
    }
    waiting_.clear();
    if (!swallows_) {
        write_rows();
    }
    return true;
}

bool SimulatedMachine::send_in_parts(bool unplugged) {
    const std::string_view text(waiting_);
    // The first byte after a break is not trusted, so the line end must not be alone there.
    const std::size_t last = text.size() - (unplugged ? 2 : 1);
    const std::size_t first = draw<std::size_t>(1, last, random_);
    if (!transmit(text.substr(0, first))) {
        return false;
    }
    if (!unplugged) {
        return pause_until(stop_, Clock::now() + 10ms) && transmit(text.substr(first));
    }
    if (!line_.drain()) {
        return false;
    }
    line_.replug();
    return line_.wait_for_listener() && transmit(text.substr(first));
}

/// Hands the bytes to the line, each at the time at which a line of this pace would have sent it.
bool SimulatedMachine::transmit(std::string_view bytes) {
    bytes_ += bytes.size();
    if (simulation_.baud == 0) {
        return line_.send(bytes);
    }
    constexpr unsigned bits = 10; // of a byte, with its start and stop bit
    const std::size_t at_once = std::max(1U, simulation_.baud / bits / 1000);
    line_free_ = std::max(line_free_, Clock::now());
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, at_once);
        line_free_ +=
            std::chrono::nanoseconds(1'000'000'000ULL * bits * piece.size() / simulation_.baud);
        if (!pause_until(stop_, line_free_) || !line_.send(piece)) {
            return false;
        }
        bytes.remove_prefix(piece.size());
    }
    return true;
}

/// The last record may wait for a line end that never comes.
void SimulatedMachine::note_unfinished() {
    for (Row& row : rows_) {
        row.number.reset();
    }
    write_rows();
}

void SimulatedMachine::write_rows() {
    fmt::memory_buffer text;
    for (const Row& row : rows_) {
        const auto end = std::back_inserter(text);
        if (row.number) {
            ++points_;
            fmt::format_to(end, "{},{},{},{},{}\n", row.record, row.fault, *row.number,
                           fmt::join(row.values, ","), line_.sent_ns());
        } else {
            fmt::format_to(end, "{},{},,,,,,,,\n", row.record, row.fault);
        }
    }
    rows_.clear();
    truth_.write(text.data(), static_cast<std::streamsize>(text.size()));
}
