// Feeds the parser of resource scripts with any bytes. What it accepts must be a script whose
// texts and dialogs, written down again, are the same.

#include "platform/modules/rc_parser.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <tuple>
#include <variant>

namespace {

using tarnel::ControlTemplate;
using tarnel::DialogTemplate;
using tarnel::ResourceScript;

std::string quoted(std::string_view text) {
    std::string written = "\"";
    for (const char c : text) {
        switch (c) {
        case '\n':
            written += "\\n";
            break;
        case '\r':
            written += "\\r";
            break;
        case '"':
            written += "\"\"";
            break;
        case '\\':
            written += "\\\\";
            break;
        default:
            written += c;
        }
    }
    return written + '"';
}

std::string list(const auto&... numbers) {
    return ((", " + std::to_string(numbers)) + ...) + '\n';
}

std::string written(const ControlTemplate& control) {
    return "CONTROL " + quoted(control.text) + ", " + std::to_string(control.id) + ", " +
           quoted(control.class_name) + ", NOT 0xFFFFFFFF | " + std::to_string(control.style) +
           list(control.x, control.y, control.width, control.height, control.ex_style);
}

/// What a caption and a font imply stands in the style already.
std::string written(const DialogTemplate& dialog) {
    std::string text = "DIALOGEX " + std::to_string(dialog.x) +
                       list(dialog.y, dialog.width, dialog.height) + "EXSTYLE " +
                       std::to_string(dialog.ex_style) + " STYLE " + std::to_string(dialog.style);
    if (!dialog.caption.empty()) {
        text += " CAPTION " + quoted(dialog.caption);
    }
    if (!dialog.font.empty() || dialog.font_size != 0) {
        text += " FONT " + std::to_string(dialog.font_size) + ", " + quoted(dialog.font);
    }
    text += " {\n";
    for (const ControlTemplate& control : dialog.controls) {
        text += written(control);
    }
    return text + "}\n";
}

std::string written(const ResourceScript& resources) {
    std::string script = "STRINGTABLE {\n";
    for (const auto& [id, entry] : resources.strings) {
        script += std::to_string(id) + ", " + quoted(entry.text) + '\n';
    }
    script += "}\n";
    for (const auto& [id, entry] : resources.dialogs) {
        script += std::to_string(id) + ' ' + written(*entry.dialog);
    }
    return script;
}

auto fields(const ControlTemplate& control) {
    return std::tie(control.class_name, control.text, control.style, control.ex_style, control.id,
                    control.x, control.y, control.width, control.height);
}

auto fields(const DialogTemplate& dialog) {
    return std::tie(dialog.caption, dialog.font, dialog.font_size, dialog.style, dialog.ex_style,
                    dialog.x, dialog.y, dialog.width, dialog.height);
}

bool same_dialogs(const DialogTemplate& left, const DialogTemplate& right) {
    return fields(left) == fields(right) &&
           std::equal(left.controls.begin(), left.controls.end(), right.controls.begin(),
                      right.controls.end(),
                      [](const auto& a, const auto& b) { return fields(a) == fields(b); });
}

bool same(const ResourceScript& left, const ResourceScript& right) {
    return std::equal(left.strings.begin(), left.strings.end(), right.strings.begin(),
                      right.strings.end(),
                      [](const auto& a, const auto& b) {
                          return a.first == b.first && a.second.text == b.second.text;
                      }) &&
           std::equal(left.dialogs.begin(), left.dialogs.end(), right.dialogs.begin(),
                      right.dialogs.end(), [](const auto& a, const auto& b) {
                          return a.first == b.first &&
                                 same_dialogs(*a.second.dialog, *b.second.dialog);
                      });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view script(reinterpret_cast<const char*>(data), size);
    const auto parsed = tarnel::parse_resource_script(script);
    if (const auto* resources = std::get_if<ResourceScript>(&parsed)) {
        const auto again = tarnel::parse_resource_script(written(*resources));
        const auto* second = std::get_if<ResourceScript>(&again);
        if (!second || !same(*resources, *second)) {
            std::abort();
        }
    }
    return 0;
}
