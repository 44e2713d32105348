#pragma once

#include "tools/machine_records.h"
#include "tools/pseudo_terminal.h"
#include "tools/waiting.h"

#include <cstdint>
#include <fstream>
#include <limits>
#include <optional>
#include <string>
#include <vector>

/// What can happen to a record on its way.
enum class Fault {
    split,  ///< sent in two parts with a pause between them
    merge,  ///< sent with the records after it in one go
    flip,   ///< a bit is turned over
    cut,    ///< its end is missing
    flood,  ///< noise comes before it
    unplug, ///< the cable is pulled in its middle, and plugged in again
};

inline constexpr std::array fault_names = {"split", "merge", "flip", "cut", "flood", "unplug"};

struct Simulation {
    const MachineKind* kind = nullptr;
    std::string line_end;
    std::string shape = shape_names.front();
    std::uint32_t seed = 1;
    std::uint64_t count = std::numeric_limits<std::uint64_t>::max();
    double rate = 0;           ///< records a second; 0: as fast as the line takes them
    unsigned baud = 0;         ///< pace of the line in bit/s; 0: as fast as it goes
    std::vector<Fault> faults; ///< which of them happen, about one in twenty records
    std::string link;
    std::string truth; ///< the file that keeps what was sent; may be empty
};

/// A measuring machine on a pseudo terminal. It waits until somebody opens its port, measures, and
/// waits until everything has been read.
///
/// Its truth is a CSV file with a row a record: what was done to it, and the point that must come
/// of it, in mm, or no number where none may come. `sent_ns` is when the last byte that the point
/// needs was handed to the line, by the clock of a point's `monotonic_ns`.
class SimulatedMachine {
  public:
    /// Ends when the descriptor `stop` is readable. Throws std::system_error when there is no
    /// pseudo terminal, or the link or the file of the truth cannot be made.
    SimulatedMachine(Simulation simulation, int stop);

    /// What to connect to.
    const std::string& port() const { return line_.port(); }

    void run();

    std::uint64_t records() const { return records_; }

    std::uint64_t points() const { return points_; }

    std::uint64_t bytes() const { return bytes_; }

  private:
    struct Row {
        std::uint64_t record;
        std::string_view fault;
        std::optional<int> number;
        std::array<double, 6> values;
    };

    bool measure();
    std::optional<Fault> draw_fault();
    void damage(std::optional<Fault> fault, std::string& text);
    Outcome outcome(std::optional<Fault> fault) const;
    void note(std::optional<Fault> fault, const MachineRecord& record);
    bool deliver(std::optional<Fault> fault);
    bool send_in_parts(bool unplugged);
    bool transmit(std::string_view bytes);
    void note_unfinished();
    void write_rows();

    const Simulation simulation_;
    const int stop_;
    PseudoTerminal line_;
    MeasuredPart part_;
    std::mt19937 random_;
    std::ofstream truth_;
    int next_number_;
    int merging_ = 0;       ///< how many further records go with the one that waits
    bool swallows_ = false; ///< the record before this one takes it for its end
    std::string waiting_;   ///< what was measured and not sent
    std::vector<Row> rows_; ///< of the records that are not complete at the other end
    Deadline line_free_{};  ///< when the line has sent what it was given, at its pace
    std::uint64_t records_ = 0;
    std::uint64_t points_ = 0;
    std::uint64_t bytes_ = 0;
};
