#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace tarnel {

/// The program that shows dialogs: what TARNEL_PRESENTER names, else beside the layer's library or
/// in the folders that belong to it. "" when there is none.
std::string presenter_path();

/// Starts it in a session of its own, with `input` and `output` as its standard ones and no other
/// descriptor of this process but standard error; -1 when the system refuses.
pid_t spawn_presenter(const std::string& path, const std::vector<std::string>& arguments, int input,
                      int output);

} // namespace tarnel
