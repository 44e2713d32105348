#pragma once

#include "protocols/PointObserver.h"

#include <string>

/// How points are written: a line each.
struct PointFormat {
    const char* name;
    const char* heading; ///< the first line, with its end; "" for none

    /// With its end.
    std::string (*line)(const __PointMMT& point, const tarnel::ReadTime& time);
};

/// "table" for a person; "csv" and "json" exact, for programs.
const PointFormat& point_format(const std::string& name);
