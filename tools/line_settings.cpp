#include "tools/line_settings.h"

#include "platform/base/last_error.h"
#include "platform/companions/registry_key.h"
#include "platform/registry/registry.h"
#include "tools/verbs.h"

#include <fmt/format.h>

#include <charconv>
#include <stdexcept>

namespace {

using BadValue = std::invalid_argument;

std::string listed_text(const CComConfSection& list, DWORD value) {
    return list.FindText(static_cast<int>(value)).GetString();
}

/// The value of a listed text, in any case of its letters.
int listed_value(const CComConfSection& list, const std::string& text) {
    std::string texts;
    for (INT_PTR position = 0; position < list.GetSize(); ++position) {
        const std::string listed = list[position]->m_strText.GetString();
        if (CLI::detail::to_lower(listed) == CLI::detail::to_lower(text)) {
            return list[position]->m_nValue;
        }
        texts += (texts.empty() ? "" : ", ") + listed;
    }
    throw BadValue("it is one of " + texts);
}

bool set_rate_by_number(Line& line, const std::string& text) {
    int rate = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, rate);
    return error == std::errc() && stop == end && line.SetBaudRate(rate);
}

bool switch_value(const std::string& text) {
    const std::string lower = CLI::detail::to_lower(text);
    if (lower != "on" && lower != "off") {
        throw BadValue("it is on or off");
    }
    return lower == "on";
}

std::string switch_text(int on) {
    return on ? "on" : "off";
}

void set_port(Line& line, const std::string& text) {
    if (text.empty()) {
        throw BadValue("it is a name, as COM3:, or the path of a device");
    }
    line.SetPortName(text.c_str());
}

void set_baud(Line& line, const std::string& text) {
    if (!set_rate_by_number(line, text)) {
        line.m_dwBaudRate = static_cast<DWORD>(listed_value(line.GetMap()->m_baudRates, text));
    }
}

void set_bits(Line& line, const std::string& text) {
    if (text.size() != 1 || text[0] < '5' || text[0] > '8') {
        throw BadValue("it is 5, 6, 7 or 8");
    }
    line.m_wByteSize = static_cast<WORD>(text[0] - '0');
}

constexpr LineField fields[] = {
    {"port", "", [](Line& line) -> std::string { return line.GetPortName().GetString(); },
     &set_port},
    {"baud", "bit/s",
     [](Line& line) { return listed_text(line.GetMap()->m_baudRates, line.m_dwBaudRate); },
     &set_baud},
    {"parity", "",
     [](Line& line) { return listed_text(line.GetMap()->m_parities, line.m_wParity); },
     [](Line& line, const std::string& text) {
         line.m_wParity = static_cast<WORD>(listed_value(line.GetMap()->m_parities, text));
     }},
    {"stop", "bits",
     [](Line& line) { return listed_text(line.GetMap()->m_stopBits, line.m_wStopBits); },
     [](Line& line, const std::string& text) {
         line.m_wStopBits = static_cast<WORD>(listed_value(line.GetMap()->m_stopBits, text));
     }},
    {"bits", "bits", [](Line& line) { return fmt::to_string(line.m_wByteSize); }, &set_bits},
    {"dtrdsr", "", [](Line& line) { return switch_text(line.GetDtrDsr()); },
     [](Line& line, const std::string& text) { line.SetDtrDsr(switch_value(text)); }},
    {"rtscts", "", [](Line& line) { return switch_text(line.GetRtsCts()); },
     [](Line& line, const std::string& text) { line.SetRtsCts(switch_value(text)); }},
    {"xonxoff", "", [](Line& line) { return switch_text(line.GetXonXoff()); },
     [](Line& line, const std::string& text) { line.SetXonXoff(switch_value(text)); }},
    {"autoconnect", "", [](Line& line) { return switch_text(line.GetConnectOnLoad()); },
     [](Line& line, const std::string& text) { line.m_bConnectOnLoad = switch_value(text); }},
};

const LineField& field_named(const std::string& name) {
    std::string names;
    for (const LineField& field : fields) {
        if (name == field.name) {
            return field;
        }
        names += (names.empty() ? "" : ", ") + std::string(field.name);
    }
    fail(exit_bad_setting, fmt::format("There is no field '{}': it is one of {}.", name, names));
}

LONG open_section(const std::string& section, HKEY* key) {
    const auto path = fmt::format("Software\\{}\\{}\\{}", tool_company, tool_profile, section);
    return RegOpenKeyExA(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, key);
}

} // namespace

std::span<const LineField> line_fields() {
    return fields;
}

std::string line_section(const std::string& name) {
    return "Lines\\" + name;
}

std::vector<std::string> line_names() {
    std::vector<std::string> names;
    HKEY lines = nullptr;
    if (open_section("Lines", &lines) == static_cast<LONG>(ERROR_SUCCESS)) {
        const CRegistryKey owner(lines, 1);
        char name[256];
        DWORD length = sizeof name;
        for (DWORD index = 0;
             RegEnumKeyExA(lines, index, name, &length, nullptr, nullptr, nullptr, nullptr) == 0;
             ++index) {
            names.emplace_back(name, length);
            length = sizeof name;
        }
    }
    return names;
}

bool load_line(Line& line, const std::string& name) {
    HKEY key = nullptr;
    const LONG error = open_section(line_section(name), &key);
    if (error == static_cast<LONG>(ERROR_FILE_NOT_FOUND)) {
        return false;
    }
    if (error != static_cast<LONG>(ERROR_SUCCESS)) {
        fail(exit_no_such_line, fmt::format("Line {} cannot be read (error {}).", name, error));
    }
    const CRegistryKey owner(key, 1);
    line.ReadFromRegistry(key);
    return true;
}

void apply_setting(const std::string& setting, Line& line) {
    const std::size_t equals = setting.find('=');
    if (equals == setting.npos) {
        fail(exit_bad_setting, fmt::format("'{}' is no setting: write FIELD=VALUE.", setting));
    }
    try {
        field_named(setting.substr(0, equals)).set(line, setting.substr(equals + 1));
    } catch (const BadValue& why) {
        fail(exit_bad_setting, fmt::format("{} cannot be: {}.", setting, why.what()));
    }
}

void PortOptions::add_to(CLI::App& verb) {
    auto* port = verb.add_option("--port", port_, "COM name, as COM3:, or the path of a device");
    auto* line = verb.add_option("--line", line_, "The settings of a line that the registry keeps");
    port->excludes(line);
    values_.resize(line_fields().size());
    for (std::size_t i = 0; i < values_.size(); ++i) {
        const std::string name = fields[i].name;
        if (name != "port" && name != "autoconnect") {
            verb.add_option("--" + name, values_[i], "Instead of what the line has")
                ->group("Settings (default: 9600 baud, 7 data bits, even parity, 1 stop bit)");
        }
    }
}

void PortOptions::fill(Line& line) const {
    if (port_.empty() && line_.empty()) {
        fail(exit_bad_setting, "Which port? Say --port NAME or --line NAME; see 'tarnel ports'.");
    }
    if (!line_.empty() && !load_line(line, line_)) {
        fail(exit_no_such_line, fmt::format("There is no line {}.", line_));
    }
    if (!port_.empty()) {
        line.SetPortName(port_.c_str());
    }
    for (std::size_t i = 0; i < values_.size(); ++i) {
        if (!values_[i].empty()) {
            apply_setting(fmt::format("{}={}", fields[i].name, values_[i]), line);
        }
    }
}
