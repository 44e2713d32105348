#include "tools/table.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdio>

namespace {

using Row = std::vector<std::string>;

bool is_control(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '\x7f';
}

/// How many places `text` (UTF-8) takes on a terminal.
std::size_t width(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

/// A device or a program may call itself anything; it must not command the terminal.
std::string harmless(std::string text) {
    std::replace_if(text.begin(), text.end(), is_control, '?');
    return text;
}

std::string csv_cell(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == text.npos) {
        return text;
    }
    std::string cell = "\"";
    for (const char c : text) {
        cell += c == '"' ? "\"\"" : std::string(1, c);
    }
    return cell + '"';
}

std::string json_text(const std::string& text) {
    std::string json = "\"";
    for (const char c : text) {
        if (is_control(c)) {
            json += fmt::format("\\u{:04x}", static_cast<unsigned>(c));
            continue;
        }
        if (c == '"' || c == '\\') {
            json += '\\';
        }
        json += c;
    }
    return json + '"';
}

std::string json_name(std::string heading) {
    for (char& c : heading) {
        c = c == ' ' ? '_' : c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return json_text(heading);
}

void print_line(const std::string& line) {
    fmt::print("{}\n", line);
    std::fflush(stdout);
}

} // namespace

void Table::add_format_option(CLI::App& verb, std::string& format) {
    verb.add_option("--format", format, "How to print: table, csv or json (an object a line)")
        ->check(CLI::IsMember({"table", "csv", "json"}))
        ->capture_default_str();
}

void Table::print(const std::string& format) const {
    if (format == "csv") {
        print_csv();
    } else if (format == "json") {
        print_json();
    } else if (!rows_.empty()) {
        print_aligned();
    }
}

void Table::print_rows(const std::string& format) const {
    if (format == "json") {
        print_json();
        return;
    }
    for (const Row& row : rows_) {
        std::string line;
        for (const std::string& cell : row) {
            line += line.empty() ? "" : format == "csv" ? "," : "  ";
            line += format == "csv" ? csv_cell(cell) : harmless(cell);
        }
        print_line(line);
    }
}

void Table::print_aligned() const {
    std::vector<std::size_t> widths(headings_.size());
    const auto widen = [&](const Row& row) {
        for (std::size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], width(row[i]));
        }
    };
    widen(headings_);
    std::for_each(rows_.begin(), rows_.end(), widen);
    const auto print_row = [&](const Row& row) {
        std::string line;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            line += harmless(row[i]) + std::string(widths[i] - width(row[i]) + 2, ' ');
        }
        print_line(line.substr(0, line.find_last_not_of(' ') + 1));
    };
    print_row(headings_);
    std::for_each(rows_.begin(), rows_.end(), print_row);
}

void Table::print_csv() const {
    Table headings(headings_);
    headings.add(headings_);
    headings.print_rows("csv");
    print_rows("csv");
}

void Table::print_json() const {
    for (const Row& row : rows_) {
        std::string line = "{";
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += (i ? ", " : "") + json_name(headings_[i]) + ": " + json_text(row[i]);
        }
        print_line(line + "}");
    }
}
