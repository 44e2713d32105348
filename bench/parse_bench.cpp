// What the ring and the parsers cost against reading the same records, by the same rules, from one
// flat text.

#include "bench/report.h"
#include "protocols/MetrolecParser.h"
#include "protocols/PercevalParser.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>

namespace {

constexpr int record_count = 50'000;

bool is_blank(char c) {
    return c == ' ' || c == '\t';
}

bool is_line_end(char c) {
    return c == '\r' || c == '\n';
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// By hand: a number is read where it stands, unless something to skip stands inside it.
class FlatMetrolec {
  public:
    explicit FlatMetrolec(std::string_view text)
        : at_(text.data()), end_(text.data() + text.size()) {}

    // 2: a point; 0: a damaged record; -1: no further complete record.
    int next(__PointMMT& point) {
        double values[3];
        double offsets[3]{};
        for (double& value : values) {
            if (const int result = coordinate(value); result != 2) {
                return result == 0 ? skip_line() : result;
            }
        }
        for (int count = 0; at_ != end_ && *at_ != '\xFF';) {
            const char c = *at_++;
            if (is_line_end(c) || (is_blank(c) && count > 0)) {
                point = {++counter_,
                         values[0],
                         values[1],
                         values[2],
                         values[0] + offsets[0],
                         values[1] + offsets[1],
                         values[2] + offsets[2]};
                return 2;
            }
            if (c == '+' || c == '-' || c == '0') {
                if (count == 3) {
                    return skip_line();
                }
                offsets[count++] = c == '+' ? -1.0 : c == '-' ? 1.0 : 0.0;
            }
        }
        return -1;
    }

  private:
    int coordinate(double& value) {
        while (at_ != end_ && is_blank(*at_)) {
            ++at_;
        }
        const auto [stop, error] = std::from_chars(at_, end_, value, std::chars_format::fixed);
        if (error != std::errc() || stop == end_ || !is_blank(*stop) || stop - at_ > 99 ||
            !std::isfinite(value)) {
            return collected(value);
        }
        value /= 1000;
        at_ = stop + 1;
        return 2;
    }

    int collected(double& value) {
        char field[99];
        std::size_t length = 0;
        for (; at_ != end_ && *at_ != '\xFF'; ++at_) {
            if (is_digit(*at_) || *at_ == '-' || *at_ == '.') {
                if (length == sizeof field) {
                    return 0;
                }
                field[length++] = *at_;
            } else if (is_line_end(*at_)) {
                return 0;
            } else if (is_blank(*at_) && length > 0) {
                value = 0;
                std::from_chars(field, field + length, value, std::chars_format::fixed);
                value /= 1000;
                ++at_;
                return 2;
            }
        }
        return -1;
    }

    int skip_line() {
        at_ = std::find_if(at_, end_, is_line_end);
        at_ += at_ != end_;
        return 0;
    }

    const char* at_;
    const char* end_;
    int counter_ = 0;
};

// By hand: a field is read where it stands, and ends with the first that no field holds.
class FlatPerceval {
  public:
    explicit FlatPerceval(std::string_view text)
        : at_(text.data()), end_(text.data() + text.size()) {}

    int next(__PointMMT& point) {
        double values[6];
        for (double& value : values) {
            if (const int result = field(value); result != 2) {
                return result == 0 ? skip_line() : result;
            }
        }
        if (skip_line() != 0) {
            return -1;
        }
        point = {counter_++, values[0], values[1], values[2], values[3], values[4], values[5]};
        return 2;
    }

  private:
    static bool is_of_field(char c) { return is_digit(c) || c == '+' || c == '-'; }

    int field(double& value) {
        while (at_ != end_ && !is_of_field(*at_)) {
            ++at_;
        }
        if (at_ != end_ && *at_ == '+') {
            ++at_;
        }
        int number = 0;
        const auto result = std::from_chars(at_, end_, number);
        const char* const stop = std::find_if_not(result.ptr, end_, is_of_field);
        if (result.ec == std::errc::result_out_of_range || stop - at_ >= 200) {
            return 0;
        }
        if (stop == end_) {
            return -1;
        }
        value = number;
        at_ = stop + 1;
        return 2;
    }

    int skip_line() {
        at_ = std::find_if(at_, end_, is_line_end);
        if (at_ == end_) {
            return -1;
        }
        ++at_;
        return 0;
    }

    const char* at_;
    const char* end_;
    int counter_ = 0;
};

double sum(const __PointMMT& point) {
    return point.x + point.y + point.z + point.x2 + point.y2 + point.z2 + point.number;
}

struct Outcome {
    double records_a_second;
    double sum; // of all that the points hold
};

// Blocks as a reader thread gets them from a line that is quicker than it.
template <typename Extract>
Outcome through_ring(const std::string& text, Extract extract) {
    constexpr std::size_t block = 500;
    ERCirBuf ring;
    double total = 0;
    const double time = bench::seconds([&] {
        for (std::size_t at = 0; at < text.size(); at += block) {
            const std::size_t length = std::min(block, text.size() - at);
            ring.Put(text.data() + at, static_cast<int>(length));
            for (__PointMMT point; extract(ring, point) == 2;) {
                total += sum(point);
            }
        }
    });
    return {record_count / time, total};
}

template <typename Flat>
Outcome flat(const std::string& text) {
    double total = 0;
    const double time = bench::seconds([&] {
        Flat records(text);
        __PointMMT point;
        for (int result = 0; result >= 0; result = records.next(point)) {
            total += result == 2 ? sum(point) : 0;
        }
    });
    return {record_count / time, total};
}

template <typename Ring, typename Minimum>
void compare(const std::string& area, Ring ring, Minimum minimum) {
    if (ring().sum != minimum().sum) {
        std::fprintf(stderr, "%s: the points are not the same\n", area.c_str());
        std::exit(1);
    }
    bench::report(area,
                  bench::compare([&] { return ring().records_a_second; },
                                 [&] { return minimum().records_a_second; }),
                  "records/s");
}

void metrolec() {
    std::mt19937 random(1);
    std::string text;
    for (int record = 0; record < record_count; ++record) {
        for (int axis = 0; axis < 3; ++axis) {
            char field[32];
            const double place = static_cast<int>(random() % 20'000'000) - 10'000'000;
            std::snprintf(field, sizeof field, "%10.1f ", place / 10);
            text += field;
        }
        text += "+-0\r";
    }
    compare(
        "b.parse.metrolec",
        [&] {
            tarnel::ParseState parse;
            int counter = 0;
            return through_ring(text, [&](ERCirBuf& ring, __PointMMT& point) {
                return tarnel::extract_metrolec(ring, parse, counter, point);
            });
        },
        [&] { return flat<FlatMetrolec>(text); });
}

void perceval() {
    std::mt19937 random(1);
    std::string text;
    for (int record = 0; record < record_count; ++record) {
        for (int value = 0; value < 6; ++value) {
            char field[32];
            std::snprintf(field, sizeof field, value == 0 ? "%+08d" : " %+08d",
                          static_cast<int>(random() % 2'000'000) - 1'000'000);
            text += field;
        }
        text += "\r\n";
    }
    compare(
        "b.parse.perceval",
        [&] {
            tarnel::ParseState parse;
            return through_ring(text, [&](ERCirBuf& ring, __PointMMT& point) {
                return tarnel::extract_perceval(ring, parse, point);
            });
        },
        [&] { return flat<FlatPerceval>(text); });
}

} // namespace

int main() {
    metrolec();
    perceval();
}
