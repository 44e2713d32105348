#pragma once

#include <filesystem>

namespace tarnel {

/// The file, the executable or a shared library, that `code` was loaded from, as an absolute path;
/// empty when it cannot be told.
std::filesystem::path file_of_code(const void* code);

} // namespace tarnel
