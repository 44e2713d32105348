#pragma once

#include <string>
#include <vector>

namespace tarnel {

/// The names in `folder`, sorted; as far as they can be read.
std::vector<std::string> names_in(const std::string& folder);

/// The first line of a small file of the system, without its end; "" when it cannot be read.
std::string first_line(const std::string& file);

} // namespace tarnel
