#pragma once

#include "platform/base/diagnostics.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace support {

/// Keeps what the layer reports, as long as it lives.
class Reports {
  public:
    Reports() { tarnel::set_report_sink(&Reports::keep, this); }

    ~Reports() { tarnel::set_report_sink(nullptr, nullptr); }

    Reports(const Reports&) = delete;
    Reports& operator=(const Reports&) = delete;

    /// How many of the lines so far contain `part`.
    std::size_t count(std::string_view part) const {
        const std::lock_guard guard(lock_);
        return static_cast<std::size_t>(std::ranges::count_if(
            lines_, [part](const auto& line) { return line.find(part) != std::string::npos; }));
    }

    /// The lines so far, without their ends.
    std::vector<std::string> lines() const {
        const std::lock_guard guard(lock_);
        return lines_;
    }

  private:
    static void keep(void* self, std::string_view line) {
        Reports& reports = *static_cast<Reports*>(self);
        const std::lock_guard guard(reports.lock_);
        reports.lines_.emplace_back(line.substr(0, line.find('\n')));
    }

    mutable std::mutex lock_;
    std::vector<std::string> lines_;
};

} // namespace support
