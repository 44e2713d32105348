#pragma once

#include "platform/base/types.h"
#include "platform/modules/dialog_template.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

namespace tarnel {

struct StringEntry {
    std::string text;
    std::size_t offset; ///< of its identifier in the script, in bytes
};

struct DialogEntry {
    std::shared_ptr<const DialogTemplate> dialog; ///< never null
    std::size_t offset;
};

/// What a resource script holds.
struct ResourceScript {
    std::map<WORD, StringEntry> strings;
    std::map<WORD, DialogEntry> dialogs;
};

/// Why a script cannot be used.
struct ScriptError {
    std::string place; ///< "line:column", both from 1, columns in characters
    std::string what;
};

/// The error as a line to report, for the script called `name`.
std::string report_line(const std::string& name, const ScriptError& error);

/// A script longer than this is refused, in bytes.
constexpr std::size_t longest_script = std::size_t{16} << 20U;

/// Reads a whole resource script: UTF-8, with or without a byte-order mark. The statements are
/// STRINGTABLE, DIALOG, DIALOGEX, LANGUAGE (accepted, without effect) and the line
/// #pragma code_page(65001); keywords in any case, constants by their known names. There is no
/// preprocessor. Knows no file and no module.
std::variant<ResourceScript, ScriptError> parse_resource_script(std::string_view script);

} // namespace tarnel
