// Feeds the parser of resource scripts with any bytes. What it accepts must be a script whose
// texts, written down again, are the same.

#include "platform/modules/rc_parser.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <string_view>
#include <variant>

namespace {

using tarnel::ResourceScript;

std::string quoted(std::string_view text) {
    std::string written = "\"";
    for (const char c : text) {
        const std::size_t at = std::string_view("\n\r\"\\").find(c);
        written +=
            at < 4 ? std::string(std::array{"\\n", "\\r", "\"\"", "\\\\"}[at]) : std::string(1, c);
    }
    return written + '"';
}

std::string written(const ResourceScript& resources) {
    std::string script = "STRINGTABLE {\n";
    for (const auto& [id, entry] : resources.strings) {
        script += std::to_string(id) + ", " + quoted(entry.text) + '\n';
    }
    return script + "}\n";
}

bool same_texts(const ResourceScript& left, const ResourceScript& right) {
    return std::equal(left.strings.begin(), left.strings.end(), right.strings.begin(),
                      right.strings.end(), [](const auto& a, const auto& b) {
                          return a.first == b.first && a.second.text == b.second.text;
                      });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view script(reinterpret_cast<const char*>(data), size);
    const auto parsed = tarnel::parse_resource_script(script);
    if (const auto* resources = std::get_if<ResourceScript>(&parsed)) {
        const auto again = tarnel::parse_resource_script(written(*resources));
        const auto* second = std::get_if<ResourceScript>(&again);
        if (!second || !same_texts(*resources, *second)) {
            std::abort();
        }
    }
    return 0;
}
