#include "tools/monitor_session.h"

#include "platform/messages/host_loop.h"

#include <fmt/format.h>
#include <poll.h>

#include <algorithm>
#include <cmath>
#include <string_view>

namespace {

/// Lines between two looks at the client window's messages: a flood must not keep it waiting.
constexpr std::size_t lines_in_one_go = 32;

} // namespace

double MonitorSession::seconds() const {
    return std::chrono::duration<double>(Clock::now() - start_).count();
}

void MonitorSession::run() {
    if (to_.output.begins()) {
        put(to_.format.heading);
    }
    while (!done_ && wait()) {
        tarnel::run_pending_messages();
        write_what_came();
    }
}

/// Sleeps until there is something to do; false when it is time to end.
bool MonitorSession::wait() {
    pollfd watched[] = {{tarnel::message_descriptor(), POLLIN, 0},
                        {feed_.descriptor(), POLLIN, 0},
                        {to_.stop, POLLIN, 0},
                        {to_.output.descriptor(), 0, 0}};
    ::poll(watched, std::size(watched), milliseconds_left());
    const bool nobody_reads = (watched[3].revents & (POLLERR | POLLHUP)) != 0;
    return !watched[2].revents && !nobody_reads && milliseconds_left() != 0;
}

/// At most an hour, which is as good as what is more; -1 without limit.
int MonitorSession::milliseconds_left() const {
    constexpr double hour = 3'600'000;
    return limits_.seconds ? static_cast<int>(std::clamp(
                                 std::ceil((*limits_.seconds - seconds()) * 1000), 0.0, hour))
                           : -1;
}

void MonitorSession::write_what_came() {
    feed_.take(items_);
    for (std::size_t i = 0; i < items_.size() && !done_; ++i) {
        std::visit([this](const auto& item) { write(item); }, items_[i]);
        if (i % lines_in_one_go == 0) {
            tarnel::run_pending_messages();
        }
    }
}

void MonitorSession::write(const MeasuredPoint& measured) {
    put(to_.format.line(measured.point, measured.time));
    if (done_) {
        return;
    }
    if (to_.server) {
        to_.server->send(point_format("json").line(measured.point, measured.time));
    }
    if (to_.points) {
        to_.points->push_back(measured.point);
    }
    done_ = ++points_ == limits_.points;
}

void MonitorSession::write(const ReceivedBlock& block) {
    to_.recording->add_bytes(block.bytes, block.time);
}

void MonitorSession::write(const StreamBreak& place) {
    if (to_.recording) {
        to_.recording->add_break(place.time);
    }
    note("the record around here was dropped");
}

void MonitorSession::write(const LineReport& report) {
    note(report.text);
}

/// A person sees it in the table, at its place; programs read points alone.
void MonitorSession::note(const std::string& text) {
    const bool for_a_person = std::string_view(to_.format.name) == "table";
    if (for_a_person) {
        put(fmt::format("-- {} --\n", text));
    }
    if (!for_a_person || to_.output.is_file()) {
        fmt::print(stderr, "{}\n", text);
    }
}

void MonitorSession::put(const std::string& text) {
    done_ = !to_.output.write(text, to_.stop) || done_;
}
