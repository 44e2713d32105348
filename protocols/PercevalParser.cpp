#include "protocols/PercevalParser.h"

#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>

namespace tarnel {

namespace {

constexpr int field_count = 6;
constexpr int longest_field = sizeof(ParseState::line) - 1;

// Values of ParseState::state.
enum State {
    waiting = 0,       // for the start of a field
    in_number = 1,     // collecting the characters of a field
    end_of_record = 2, // all fields are read, the line end is to come
    skipping_line = 3, // the record is damaged; goes on after the line end
    after_sign = 10    // skipping the leading zeros of a field
};

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

bool is_of_number(char c) {
    return is_digit(c) || c == '+' || c == '-';
}

bool is_line_end(char c) {
    return c == '\r' || c == '\n';
}

void store(ParseState& parse, int value) {
    parse.values[parse.value_index++] = value;
    parse.state = parse.value_index == field_count ? end_of_record : waiting;
}

// Nothing of the record is used, `last` being the last of its characters that has been taken.
void drop_record(ParseState& parse, char last) {
    ++parse.damaged_records;
    parse.clear_line();
    parse.value_index = 0;
    parse.state = is_line_end(last) ? waiting : skipping_line;
}

void collect(ParseState& parse, char c) {
    if (parse.line_length == longest_field) {
        drop_record(parse, c);
        return;
    }
    parse.line[parse.line_length++] = c;
    parse.line[parse.line_length] = '\0';
}

void end_field(ParseState& parse, char last) {
    // A number has one sign: behind a plus, no minus is for from_chars to see.
    const char* const start = parse.line + (parse.line[0] == '+' && parse.line[1] != '-');
    int value = 0; // unless there is a number
    const auto result = std::from_chars(start, parse.line + parse.line_length, value);
    if (result.ec == std::errc::result_out_of_range) {
        drop_record(parse, last);
        return;
    }
    parse.clear_line();
    store(parse, value);
}

// Takes one character; whether a record is complete with it.
bool take(ParseState& parse, char c) {
    switch (parse.state) {
    case waiting:
        if (is_of_number(c)) {
            parse.state = is_digit(c) ? in_number : after_sign;
            if (c != '+') {
                collect(parse, c);
            }
        }
        return false;
    case after_sign:
        if (c == '0') {
            return false;
        }
        parse.state = in_number;
        [[fallthrough]];
    case in_number:
        is_of_number(c) ? collect(parse, c) : end_field(parse, c);
        return false;
    case end_of_record:
        return is_line_end(c);
    default:
        if (is_line_end(c)) {
            parse.state = waiting;
        }
        return false;
    }
}

// The usual field, a sign and digits that are all there, is read where it stands. The result is how
// many characters it takes with the one that ends it; 0 for what is left to `take`.
std::ptrdiff_t take_plain_field(ParseState& parse, const char* text, const char* end) {
    const char* const start = text + (*text == '+');
    int value = 0;
    const auto [stop, error] = std::from_chars(start, end, value);
    if (error != std::errc() || stop - start > longest_field || stop == end ||
        is_of_number(*stop) || *stop == ERCirBuf::no_character) {
        return 0;
    }
    store(parse, value);
    return stop + 1 - text;
}

// Takes characters up to the end of a record or to where there is no further one; whether a record
// is complete.
bool take_record(ParseState& parse, const char*& at, const char* end) {
    while (at != end && *at != ERCirBuf::no_character) {
        if (parse.state == waiting) {
            const std::ptrdiff_t taken = take_plain_field(parse, at, end);
            at += taken;
            if (taken > 0) {
                continue;
            }
        }
        if (take(parse, *at++)) {
            return true;
        }
    }
    return false;
}

} // namespace

int extract_perceval(ERCirBuf& ring, ParseState& parse, __PointMMT& point) {
    while (ring.GetNbChar() > 0) {
        const std::string_view run = ring.runs()[0];
        const char* at = run.data();
        const bool complete = take_record(parse, at, at + run.size());
        ring.Consomme(static_cast<int>(at - run.data()));
        if (complete) {
            const double* const v = parse.values;
            point = {parse.point_counter++, v[0], v[1], v[2], v[3], v[4], v[5]};
            parse.state = waiting;
            parse.value_index = 0;
            return 2;
        }
        if (at != run.data() + run.size()) {
            ring.Consomme(1);
            break;
        }
    }
    return NO_POINT;
}

} // namespace tarnel
