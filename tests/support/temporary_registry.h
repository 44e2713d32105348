#pragma once

#include "platform/registry/registry.h"

#include <stdlib.h>

#include <filesystem>
#include <string>

namespace support {

/// An empty registry of the test's own for as long as this object lives, also for the programs that
/// the test starts.
class TemporaryRegistry {
  public:
    TemporaryRegistry() {
        ::setenv("TARNEL_REGISTRY_DIR", folder.c_str(), 1);
        tarnel::close_registry();
    }

    ~TemporaryRegistry() {
        tarnel::close_registry();
        ::unsetenv("TARNEL_REGISTRY_DIR");
        std::filesystem::remove_all(folder);
    }

    TemporaryRegistry(const TemporaryRegistry&) = delete;
    TemporaryRegistry& operator=(const TemporaryRegistry&) = delete;

    const std::filesystem::path folder = make_folder();

  private:
    static std::filesystem::path make_folder() {
        std::string pattern = std::filesystem::temp_directory_path() / "registry-XXXXXX";
        return ::mkdtemp(pattern.data());
    }
};

} // namespace support
