#include "tools/point_format.h"

#include "tools/time_stamp.h"

#include <fmt/format.h>

#include <array>
#include <charconv>

namespace {

/// With three decimals, and up to six where there are more; the points stand one below the other.
std::string aligned(double mm) {
    std::string text = fmt::format("{:14.6f}", mm);
    for (std::size_t i = text.size() - 1; i >= text.size() - 3 && text[i] == '0'; --i) {
        text[i] = ' ';
    }
    return text;
}

std::string table_line(const __PointMMT& p, const tarnel::ReadTime& time) {
    return fmt::format("{:>6}{}{}{}{}{}{}  {}\n", p.number, aligned(p.x), aligned(p.y),
                       aligned(p.z), aligned(p.x2), aligned(p.y2), aligned(p.z2),
                       utc_time(time.utc_us).substr(11, 12));
}

/// The shortest text that reads back as the same number.
std::string exact(double mm) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), mm).ptr;
    return {text.data(), end};
}

std::string csv_line(const __PointMMT& p, const tarnel::ReadTime& time) {
    return fmt::format("{},{},{},{},{},{},{},{},{}\n", p.number, exact(p.x), exact(p.y), exact(p.z),
                       exact(p.x2), exact(p.y2), exact(p.z2), utc_time(time.utc_us),
                       time.monotonic_ns);
}

std::string json_line(const __PointMMT& p, const tarnel::ReadTime& time) {
    return fmt::format(
        R"({{"number": {}, "x": {}, "y": {}, "z": {}, "x2": {}, "y2": {}, "z2": {}, )"
        R"("time": "{}", "monotonic_ns": {}}})"
        "\n",
        p.number, exact(p.x), exact(p.y), exact(p.z), exact(p.x2), exact(p.y2), exact(p.z2),
        utc_time(time.utc_us), time.monotonic_ns);
}

constexpr PointFormat formats[] = {
    {"table",
     "number      x mm          y mm          z mm          x2 mm         y2 mm         z2 mm    "
     "     time UTC\n",
     &table_line},
    {"csv", "number,x,y,z,x2,y2,z2,time,monotonic_ns\n", &csv_line},
    {"json", "", &json_line},
};

} // namespace

const PointFormat& point_format(const std::string& name) {
    for (const PointFormat& format : formats) {
        if (name == format.name) {
            return format;
        }
    }
    return formats[0];
}
