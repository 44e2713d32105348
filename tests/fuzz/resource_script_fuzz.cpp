// Feeds the parser of resource scripts with any bytes. What it accepts must be a script whose
// texts, written down again, give the same texts.

#include "platform/modules/rc_parser.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <variant>

namespace {

using tarnel::ResourceScript;

std::string written(const ResourceScript& resources) {
    std::string script = "STRINGTABLE {\n";
    for (const auto& [id, entry] : resources.strings) {
        script += std::to_string(id) + ", \"";
        for (const char c : entry.text) {
            switch (c) {
            case '\n':
                script += "\\n";
                break;
            case '\r':
                script += "\\r";
                break;
            case '"':
                script += "\"\"";
                break;
            case '\\':
                script += "\\\\";
                break;
            default:
                script += c;
            }
        }
        script += "\"\n";
    }
    return script + "}";
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
        const auto* same = std::get_if<ResourceScript>(&again);
        if (!same || !same_texts(*resources, *same)) {
            std::abort();
        }
    }
    return 0;
}
