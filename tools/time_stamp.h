#pragma once

#include "protocols/PointObserver.h"

#include <cstdint>
#include <string>

/// A time in UTC as ISO 8601 has it, from microseconds since 1970: "2025-03-01T08:15:30.125000Z".
std::string utc_time(std::int64_t microseconds);

/// What is read now has this time.
tarnel::ReadTime read_time_now();
