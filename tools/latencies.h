#pragma once

#include <cstddef>
#include <cstdint>
#include <map>

/// How long something took, again and again, by the microsecond: of any number of times it keeps
/// only how often each was there.
class Latencies {
  public:
    void add(std::int64_t nanoseconds) {
        ++counts_[nanoseconds / 1000];
        ++total_;
    }

    std::size_t total() const { return total_; }

    // In milliseconds, of at least one.

    double median() const {
        std::size_t below = 0;
        auto it = counts_.begin();
        while ((below += it->second) * 2 < total_) {
            ++it;
        }
        return milliseconds(it->first);
    }

    double worst() const { return milliseconds(counts_.rbegin()->first); }

  private:
    static double milliseconds(std::int64_t us) { return static_cast<double>(us) / 1000; }

    std::map<std::int64_t, std::size_t> counts_;
    std::size_t total_ = 0;
};
