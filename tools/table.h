#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/// Rows of text under headings, printed as the user wants them.
class Table {
  public:
    /// `headings` carry the units; in JSON they are the names, in small letters with underscores.
    explicit Table(std::vector<std::string> headings) : headings_(std::move(headings)) {}

    /// Gives `verb` the option --format and writes the choice to `format`.
    static void add_format_option(CLI::App& verb, std::string& format);

    void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }

    /// Prints to standard output: "table" aligned for a person, "csv", or "json", an object a line.
    void print(const std::string& format) const;

    /// The same for rows that come one by one: without headings, nothing aligned.
    void print_rows(const std::string& format) const;

  private:
    void print_aligned() const;
    void print_csv() const;
    void print_json() const;

    std::vector<std::string> headings_;
    std::vector<std::vector<std::string>> rows_;
};
