#include "protocols/MetrolecParser.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string_view>
#include <utility>

namespace tarnel {

namespace {

constexpr std::size_t longest_field = 99;

// How reading a field ends: as it should, with the line or the data before it has ended, or because
// it is too long.
enum class End { field, line, data, too_long };

// Examines the ring's characters one after the other and leaves them there.
class Reader {
  public:
    explicit Reader(const ERCirBuf& ring)
        : here_(ring.runs()[0]), later_(ring.runs()[1]), held_(ring.GetNbChar()) {}

    char next() {
        if (here_.empty()) {
            std::swap(here_, later_);
        }
        if (here_.empty() || here_.front() == ERCirBuf::no_character) {
            return ERCirBuf::no_character;
        }
        const char c = here_.front();
        here_.remove_prefix(1);
        return c;
    }

    /// What lies ahead in one piece, and how to pass some of it.
    std::string_view ahead() const { return here_; }

    void pass(std::size_t count) { here_.remove_prefix(count); }

    int examined() const { return held_ - static_cast<int>(here_.size() + later_.size()); }

  private:
    std::string_view here_;
    std::string_view later_;
    int held_;
};

bool is_blank(char c) {
    return c == ' ' || c == '\t';
}

bool is_line_end(char c) {
    return c == '\r' || c == '\n';
}

bool is_of_number(char c) {
    return (c >= '0' && c <= '9') || c == '-' || c == '.';
}

// The usual coordinate, with nothing to skip inside it, is read where it stands. Anything else is
// left to read_coordinate.
bool read_plain_coordinate(Reader& reader, double& value) {
    while (!reader.ahead().empty() && is_blank(reader.ahead().front())) {
        reader.pass(1);
    }
    const std::string_view text = reader.ahead();
    const char* const end = text.data() + text.size();
    const char* const stop = std::from_chars(text.data(), end, value, std::chars_format::fixed).ptr;
    const auto length = static_cast<std::size_t>(stop - text.data());
    // It also reads words for infinity.
    if (length == 0 || length > longest_field || stop == end || !is_blank(*stop) ||
        !std::isfinite(value)) {
        return false;
    }
    reader.pass(length + 1);
    return true;
}

End read_coordinate(Reader& reader, double& value) {
    if (read_plain_coordinate(reader, value)) {
        return End::field;
    }
    char field[longest_field];
    std::size_t length = 0;
    for (;;) {
        const char c = reader.next();
        if (is_of_number(c)) {
            if (length == longest_field) {
                return End::too_long;
            }
            field[length++] = c;
        } else if (is_blank(c) && length > 0) {
            value = 0; // unless there is a number
            std::from_chars(field, field + length, value, std::chars_format::fixed);
            return End::field;
        } else if (is_line_end(c)) {
            return End::line;
        } else if (c == ERCirBuf::no_character) {
            return End::data;
        }
    }
}

// The three coordinates, in millimetres.
End read_place(Reader& reader, std::array<double, 3>& place) {
    for (double& coordinate : place) {
        const End end = read_coordinate(reader, coordinate);
        if (end != End::field) {
            return end;
        }
        coordinate /= 1000;
    }
    return End::field;
}

End read_directions(Reader& reader, std::array<double, 3>& offsets) {
    std::size_t count = 0;
    for (;;) {
        const char c = reader.next();
        if (c == '+' || c == '-' || c == '0') {
            if (count == offsets.size()) {
                return End::too_long;
            }
            // The second point lies on the other side than the sign says.
            offsets[count++] = c == '+' ? -1.0 : c == '-' ? 1.0 : 0.0;
        } else if (is_line_end(c) || (is_blank(c) && count > 0)) {
            return End::field;
        } else if (c == ERCirBuf::no_character) {
            return End::data;
        }
    }
}

// Throws away what there is of a record with too long a field. Until its line end comes, the
// shortest such record stands in for it, so that nothing of its rest is taken for a record.
void drop_damaged(ERCirBuf& ring, Reader& reader, ParseState& parse) {
    char c = 0;
    do {
        c = reader.next();
    } while (!is_line_end(c) && c != ERCirBuf::no_character);
    ring.Consomme(reader.examined());
    if (is_line_end(c)) {
        ++parse.damaged_records;
    } else {
        // Put back from its end to its start.
        for (const char part : {'+', '+', '+', '+', ' ', '0', ' ', '0', ' ', '0'}) {
            ring.PutBack(part);
        }
    }
}

} // namespace

int extract_metrolec(ERCirBuf& ring, ParseState& parse, int& point_counter, __PointMMT& point) {
    Reader reader(ring);
    std::array<double, 3> place{};
    std::array<double, 3> offsets{};
    End end = read_place(reader, place);
    if (end == End::field) {
        end = read_directions(reader, offsets);
    }
    if (end == End::data) {
        return NO_POINT;
    }
    if (end == End::too_long) {
        drop_damaged(ring, reader, parse);
        return NO_POINT;
    }
    ring.Consomme(reader.examined());
    if (end == End::line) {
        const bool is_empty = reader.examined() == 1; // as between a CR and an LF
        parse.damaged_records += !is_empty;
        return NO_POINT;
    }
    const auto [x, y, z] = place;
    point = {++point_counter, x, y, z, x + offsets[0], y + offsets[1], z + offsets[2]};
    return 2;
}

} // namespace tarnel
