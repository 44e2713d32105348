#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace tarnel {

/// The first of presenter_places() that is a program; "" when there is none.
std::string presenter_path();

/// Starts it in a session of its own, with `input`, `output` and `errors` as its standard ones and
/// no other descriptor of this process; -1 when the system refuses.
pid_t spawn_presenter(const std::string& path, const std::vector<std::string>& arguments, int input,
                      int output, int errors);

} // namespace tarnel
