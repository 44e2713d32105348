#pragma once

#include "tools/client_window.h"
#include "tools/data_output.h"
#include "tools/point_feed.h"
#include "tools/point_format.h"
#include "tools/point_server.h"
#include "tools/recording.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

/// Writes what a protocol brings, until enough points have come, the time is up, or it is stopped.
class MonitorSession {
  public:
    struct Sinks {
        const PointFormat& format;
        DataOutput& output;
        RecordingWriter* recording;      ///< null for none
        std::vector<__PointMMT>* points; ///< all that were written; null for none
        PointServer* server;             ///< null for none
        int stop;                        ///< readable when it is to end
    };

    struct Limits {
        std::optional<std::uint64_t> points;
        std::optional<double> seconds;
    };

    MonitorSession(PointFeed& feed, const Sinks& sinks, const Limits& limits)
        : feed_(feed), to_(sinks), limits_(limits) {}

    /// Throws std::system_error when something cannot be written.
    void run();

    /// Writes what is left, once nothing more will come.
    void write_what_came();

    std::uint64_t points() const { return points_; }

    double seconds() const;

  private:
    using Clock = std::chrono::steady_clock;

    bool wait();
    int milliseconds_left() const;
    void write(const MeasuredPoint& point);
    void write(const ReceivedBlock& block);
    void write(const StreamBreak& place);
    void write(const LineReport& report);
    void note(const std::string& text);
    void put(const std::string& text);

    PointFeed& feed_;
    const Sinks to_;
    const Limits limits_;
    const Clock::time_point start_ = Clock::now();
    std::vector<FeedItem> items_;
    std::uint64_t points_ = 0;
    bool done_ = false;
};
