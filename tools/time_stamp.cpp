#include "tools/time_stamp.h"

#include <fmt/chrono.h>

#include <chrono>

std::string utc_time(std::int64_t microseconds) {
    constexpr std::int64_t second = 1'000'000;
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:06}Z", fmt::gmtime(microseconds / second),
                       microseconds % second);
}

tarnel::ReadTime read_time_now() {
    using namespace std::chrono;
    return {duration_cast<microseconds>(system_clock::now().time_since_epoch()).count(),
            duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count()};
}
