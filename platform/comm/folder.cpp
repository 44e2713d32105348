#include "platform/comm/folder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace tarnel {

std::vector<std::string> names_in(const std::string& folder) {
    std::vector<std::string> names;
    // A device or a process may vanish while it is looked at, so nothing here throws.
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    for (; entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        names.push_back(entry->path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string first_line(const std::string& file) {
    std::string line;
    std::ifstream stream(file);
    std::getline(stream, line);
    return line;
}

} // namespace tarnel
