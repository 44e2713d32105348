#include "platform/windows/json.h"

#include "platform/modules/utf8.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace tarnel {
namespace {

/// A byte that cannot stand for itself.
void append_escaped(std::string& json, unsigned char byte) {
    std::array<char, 8> escaped{};
    std::snprintf(escaped.data(), escaped.size(), "\\u%04x", byte < 0x80 ? byte : 0xFFFDU);
    json += escaped.data();
}

void append_text(std::string& json, std::string_view text) {
    json += '"';
    while (!text.empty()) {
        const std::size_t good = text_prefix(text);
        for (const char c : text.substr(0, good)) {
            const auto byte = static_cast<unsigned char>(c);
            if (byte < 0x20 || c == '"' || c == '\\') {
                append_escaped(json, byte);
            } else {
                json += c;
            }
        }
        text.remove_prefix(good);
        if (!text.empty()) {
            append_escaped(json, static_cast<unsigned char>(text.front()));
            text.remove_prefix(1);
        }
    }
    json += '"';
}

template <typename List, typename Append>
void append_list(std::string& json, const List& list, Append append) {
    json += '[';
    for (const auto& part : list) {
        if (&part != &list.front()) {
            json += ',';
        }
        append(part);
    }
    json += ']';
}

void append_character(std::string& text, std::uint32_t character) {
    const auto put = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (character < 0x80) {
        return put(character);
    }
    if (character < 0x800) {
        put(0xC0 | character >> 6);
    } else if (character < 0x10000) {
        put(0xE0 | character >> 12);
        put(0x80 | (character >> 6 & 0x3F));
    } else {
        put(0xF0 | character >> 18);
        put(0x80 | (character >> 12 & 0x3F));
        put(0x80 | (character >> 6 & 0x3F));
    }
    put(0x80 | (character & 0x3F));
}

/// Reads from the front; each function is false where what it reads is not there.
class Reader {
  public:
    explicit Reader(std::string_view rest) : rest_(rest) {}

    bool at_end() const { return rest_.empty(); }

    bool take(std::string_view wanted) {
        const bool there = rest_.starts_with(wanted);
        rest_.remove_prefix(there ? wanted.size() : 0);
        return there;
    }

    bool take_number(std::int64_t& number) {
        const auto [end, error] =
            std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
        return error == std::errc();
    }

    bool take_text(std::string& text) {
        if (!take("\"")) {
            return false;
        }
        while (!take("\"")) {
            if (rest_.empty() || (take("\\") ? !take_escaped(text) : !take_plain(text))) {
                return false;
            }
        }
        return true;
    }

  private:
    bool take_plain(std::string& text) {
        const char c = rest_.front();
        text += c;
        rest_.remove_prefix(1);
        return static_cast<unsigned char>(c) >= 0x20;
    }

    bool take_escaped(std::string& text) {
        constexpr std::string_view letters = "\"\\/bfnrt";
        constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
        if (take("u")) {
            return take_character(text);
        }
        const std::size_t at = rest_.empty() ? letters.npos : letters.find(rest_.front());
        if (at == letters.npos) {
            return false;
        }
        text += meanings[at];
        rest_.remove_prefix(1);
        return true;
    }

    bool take_unit(std::uint32_t& unit) {
        const std::string_view digits = rest_.substr(0, 4);
        const auto [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
        const bool whole = error == std::errc() && end == digits.data() + 4;
        rest_.remove_prefix(whole ? 4 : 0);
        return whole;
    }

    /// One unit of UTF-16, or two that make up one character; half a character is replaced.
    bool take_character(std::string& text) {
        std::uint32_t unit = 0;
        if (!take_unit(unit)) {
            return false;
        }
        std::uint32_t low = 0;
        Reader ahead = *this;
        if (unit >= 0xD800 && unit < 0xDC00 && ahead.take("\\u") && ahead.take_unit(low) &&
            low >= 0xDC00 && low < 0xE000) {
            *this = ahead;
            unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        }
        append_character(text, unit >= 0xD800 && unit < 0xE000 ? 0xFFFD : unit);
        return true;
    }

    std::string_view rest_;
};

} // namespace

void JsonObject::begin(std::string_view name) {
    if (!members_.empty()) {
        members_ += ',';
    }
    append_text(members_, name);
    members_ += ':';
}

JsonObject& JsonObject::add(std::string_view name, std::int64_t number) {
    begin(name);
    members_ += std::to_string(number);
    return *this;
}

JsonObject& JsonObject::add(std::string_view name, bool truth) {
    begin(name);
    members_ += truth ? "true" : "false";
    return *this;
}

JsonObject& JsonObject::add(std::string_view name, std::string_view text) {
    begin(name);
    append_text(members_, text);
    return *this;
}

JsonObject& JsonObject::add(std::string_view name, const std::vector<std::string>& texts) {
    begin(name);
    append_list(members_, texts, [this](const std::string& text) { append_text(members_, text); });
    return *this;
}

JsonObject& JsonObject::add(std::string_view name, const std::vector<JsonObject>& objects) {
    begin(name);
    append_list(members_, objects, [this](const JsonObject& part) { members_ += part.text(); });
    return *this;
}

std::optional<std::vector<JsonMember>> read_json(std::string_view line) {
    Reader reader(line);
    std::vector<JsonMember> members;
    if (!reader.take("{")) {
        return std::nullopt;
    }
    do {
        JsonMember& member = members.emplace_back();
        if (!reader.take_text(member.name) || !reader.take(":") ||
            (!reader.take_number(member.number) && !reader.take_text(member.text))) {
            return std::nullopt;
        }
    } while (reader.take(","));
    return reader.take("}") && reader.at_end() ? std::optional(std::move(members)) : std::nullopt;
}

} // namespace tarnel
