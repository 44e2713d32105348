#pragma once

#include "serial/PortConfiguration.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <span>
#include <string>
#include <vector>

// Serial configurations as the tool's verbs take them from the command line and the registry.

constexpr int exit_no_such_line = 2;
constexpr int exit_bad_setting = 3;

/// The registry key of the tool, below the user's software: company and profile.
constexpr const char* tool_company = "Tarnel";
constexpr const char* tool_profile = "tarnel";

struct Line final : CComDeviceConfiguration {
    using CComDeviceConfiguration::GetMap;
};

/// A setting by the name that it has at the command line. `set` throws std::invalid_argument.
struct LineField {
    const char* name;
    const char* unit;
    std::string (*show)(Line& line);
    void (*set)(Line& line, const std::string& text);
};

std::span<const LineField> line_fields();

/// Applies "FIELD=VALUE", or fails with exit_bad_setting.
void apply_setting(const std::string& setting, Line& line);

/// The section of the tool's registry key that keeps the line called `name`.
std::string line_section(const std::string& name);

/// What the lines are called that the registry keeps.
std::vector<std::string> line_names();

/// Reads the line called `name`; false when there is none.
bool load_line(Line& line, const std::string& name);

/// The options of a verb that opens a port: --port, --line and one for each setting.
class PortOptions {
  public:
    void add_to(CLI::App& verb);

    /// The configuration that they describe; fails with a clear text when they make none.
    void fill(Line& line) const;

  private:
    std::string port_;
    std::string line_;
    std::vector<std::string> values_;
};
