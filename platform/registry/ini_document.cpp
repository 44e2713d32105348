#include "platform/registry/ini_document.h"

#include "platform/base/letter_case.h"
#include "platform/base/utf16.h"

#include <algorithm>
#include <utility>

namespace tarnel {
namespace {

constexpr std::string_view utf8_mark = "\xEF\xBB\xBF";
constexpr std::string_view utf16_mark = "\xFF\xFE";

std::string decode_utf16(std::string_view bytes) {
    std::u16string units(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < units.size(); ++i) {
        units[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                         static_cast<unsigned char>(bytes[2 * i + 1]) << 8);
    }
    return utf8_of(units);
}

std::string encode_utf16(std::string_view text) {
    std::string bytes;
    bytes.reserve(2 * text.size());
    for (const char16_t unit : utf16_of(text)) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

std::string_view without_line_end(std::string_view line) {
    if (line.ends_with('\n')) {
        line.remove_suffix(1);
    }
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return line;
}

} // namespace

std::string_view without_blanks(std::string_view text) {
    const std::size_t first = std::min(text.find_first_not_of(" \t"), text.size());
    text.remove_prefix(first);
    return text.substr(0, text.find_last_not_of(" \t") + 1);
}

IniLine take_ini_line(std::string_view& text) {
    IniLine line;
    line.whole = text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1);
    text.remove_prefix(line.whole.size());
    const std::string_view content = without_blanks(without_line_end(line.whole));
    if (content.empty()) {
        return line;
    }
    const bool bracket = content.front() == '[';
    const std::size_t end = content.find(bracket ? ']' : '=');
    if (content.front() == ';') {
        line.kind = IniKind::Comment;
    } else if (end == content.npos || content.find('\0') != content.npos) {
        line.kind = IniKind::Other;
    } else {
        line.kind = bracket ? IniKind::Section : IniKind::Entry;
        line.name = without_blanks(content.substr(bracket, end - bracket));
        line.value = without_blanks(content.substr(end + 1));
    }
    return line;
}

IniDocument::IniDocument(std::string_view bytes) {
    if (bytes.starts_with(utf8_mark)) {
        mark_ = utf8_mark;
    } else if (bytes.starts_with(utf16_mark)) {
        mark_ = utf16_mark;
    }
    bytes.remove_prefix(mark_.size());
    if (mark_ == utf16_mark) {
        rest_ = bytes.substr(bytes.size() & ~std::size_t{1});
        text_ = decode_utf16(bytes);
    } else {
        text_ = bytes;
    }
}

void IniDocument::set(std::string_view section, std::string_view key, std::string_view value) {
    std::size_t end = 0; // of what is in the section so far, 0 while it has not been found
    std::string_view left = text_;
    while (!left.empty()) {
        const IniLine line = take_ini_line(left);
        if (line.kind == IniKind::Section) {
            if (end) {
                break;
            }
            end = same_but_for_case(line.name, section) ? offset(left) : 0;
        } else if (end && line.kind == IniKind::Entry && same_but_for_case(line.name, key)) {
            const std::size_t old = offset(line.value);
            text_.replace(old,
                          offset(without_line_end(line.whole)) +
                              without_line_end(line.whole).size() - old,
                          value);
            return;
        } else if (end && (line.kind == IniKind::Entry || line.kind == IniKind::Other)) {
            end = offset(left);
        }
    }
    if (!end) {
        insert_line(text_.size(), '[' + std::string(section) + ']');
        end = text_.size();
    }
    insert_line(end, std::string(key) + '=' + std::string(value));
}

bool IniDocument::remove_key(std::string_view section, std::string_view key) {
    std::string kept;
    bool inside = false;
    for (std::string_view left = text_; !left.empty();) {
        const IniLine line = take_ini_line(left);
        if (line.kind == IniKind::Section) {
            inside = same_but_for_case(line.name, section);
        }
        if (!inside || line.kind != IniKind::Entry || !same_but_for_case(line.name, key)) {
            kept += line.whole;
        }
    }
    return replace(std::move(kept));
}

bool IniDocument::remove_section(std::string_view section) {
    std::string kept;
    std::string comments; // since the last entry that goes
    bool inside = false;
    for (std::string_view left = text_; !left.empty();) {
        const IniLine line = take_ini_line(left);
        if (line.kind == IniKind::Section) {
            kept += std::exchange(comments, {});
            inside = same_but_for_case(line.name, section);
        }
        if (!inside) {
            kept += line.whole;
        } else if (line.kind == IniKind::Comment) {
            comments += line.whole;
        } else if (line.kind != IniKind::Blank) {
            comments.clear();
        }
    }
    return replace(kept + comments);
}

std::string IniDocument::bytes() const {
    std::string bytes(mark_);
    bytes += mark_ == utf16_mark ? encode_utf16(text_) : text_;
    return bytes + rest_;
}

std::string_view IniDocument::line_end() const {
    const std::size_t end = text_.find('\n');
    const bool unix_file = end != text_.npos && (end == 0 || text_[end - 1] != '\r');
    return unix_file ? "\n" : "\r\n";
}

void IniDocument::insert_line(std::size_t at, std::string line) {
    const std::string_view end = line_end();
    line += end;
    if (at > 0 && text_[at - 1] != '\n') {
        line.insert(0, end);
    }
    text_.insert(at, line);
}

bool IniDocument::replace(std::string&& text) {
    const bool changed = text.size() != text_.size();
    text_ = std::move(text);
    return changed;
}

} // namespace tarnel
