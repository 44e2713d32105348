// What it costs to read the library's own resource script.

#include "bench/report.h"
#include "platform/modules/rc_parser.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

int main() {
    std::ostringstream file;
    file << std::ifstream(TARNEL_SOURCE_DIR "/resources/TarnelToolBoxLib.rc").rdbuf();
    const std::string script = file.str();
    std::vector<double> microseconds;
    for (int i = 0; i < 1001; ++i) {
        microseconds.push_back(1e6 * bench::seconds([&] {
                                   const auto parsed = tarnel::parse_resource_script(script);
                                   if (!std::holds_alternative<tarnel::ResourceScript>(parsed)) {
                                       std::abort();
                                   }
                               }));
    }
    bench::report("g.strings", "tarnel", bench::median(microseconds), "us");
}
