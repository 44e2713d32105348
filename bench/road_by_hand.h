#pragma once

// The road of a measured point done by hand, as the minimum to compare with: a thread that polls,
// reads, parses and stores, and wakes the client by an event descriptor.

#include "protocols/Point.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <charconv>
#include <cstring>
#include <ctime>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

inline double thread_seconds() {
    timespec used{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return double(used.tv_sec) + 1e-9 * double(used.tv_nsec);
}

/// What both roads tell while they run.
struct Progress {
    explicit Progress(int count) : count_(count) {}

    /// On the reader thread, for each record.
    void parsed_one() {
        if (parsed.fetch_add(1, std::memory_order_relaxed) + 1 == count_) {
            cpu = thread_seconds();
        }
    }

    /// On the client's thread.
    void handle(int number) {
        if (on_point) {
            on_point();
        }
        handled.store(number + 1, std::memory_order_release);
    }

    std::function<void()> on_point;
    std::atomic<int> parsed = 0;
    std::atomic<int> handled = 0;
    double cpu = 0; ///< of the reader thread, once all are parsed

  private:
    const int count_;
};

class ByHand {
  public:
    ByHand(const std::string& port, Progress& progress)
        : port_(::open(port.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK)), progress_(progress),
          client_([this] { run_client(); }), reader_([this] { run_reader(); }) {}

    ~ByHand() {
        ::eventfd_write(stop_, 1);
        reader_.join();
        stopped_ = true;
        ::eventfd_write(news_, 1);
        client_.join();
        for (const int descriptor : {port_, stop_, news_}) {
            ::close(descriptor);
        }
    }

  private:
    void run_reader() {
        pollfd entries[] = {{port_, POLLIN, 0}, {stop_, POLLIN, 0}};
        char block[4096];
        std::size_t kept = 0;
        while (::poll(entries, 2, -1) > 0 && !entries[1].revents) {
            const auto count = ::read(port_, block + kept, sizeof block - kept);
            if (count > 0) {
                kept = parse(block, block + kept + count);
            }
        }
    }

    /// Takes the complete lines; the rest goes to the front, and its length is the result.
    std::size_t parse(char* at, const char* end) {
        char* const front = at;
        const std::lock_guard guard(lock_);
        while (const auto* line_end = static_cast<const char*>(
                   std::memchr(at, '\n', static_cast<std::size_t>(end - at)))) {
            double values[6];
            const char* field = at;
            for (double& value : values) {
                int number = 0;
                field += *field == ' ';
                field += *field == '+';
                field = std::from_chars(field, line_end, number).ptr;
                value = number / 1000.0;
            }
            last_ = {next_number_++, values[0], values[1], values[2],
                     values[3],      values[4], values[5]};
            progress_.parsed_one();
            if (!std::exchange(announced_, true)) {
                ::eventfd_write(news_, 1);
            }
            at += line_end + 1 - at;
        }
        std::memmove(front, at, static_cast<std::size_t>(end - at));
        return static_cast<std::size_t>(end - at);
    }

    void run_client() {
        eventfd_t value = 0;
        while (::eventfd_read(news_, &value) == 0 && !stopped_) {
            __PointMMT point;
            {
                const std::lock_guard guard(lock_);
                point = last_;
                announced_ = false;
            }
            progress_.handle(point.number);
        }
    }

    const int port_;
    const int stop_ = ::eventfd(0, 0);
    const int news_ = ::eventfd(0, 0);
    std::atomic<bool> stopped_ = false;
    std::mutex lock_;
    __PointMMT last_;
    int next_number_ = 0;
    bool announced_ = false;
    Progress& progress_;
    std::thread client_;
    std::thread reader_;
};
