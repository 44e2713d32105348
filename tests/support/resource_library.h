#pragma once

#include "platform/modules/module.h"
#include "platform/modules/module_state.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace support {

/// A resource library of the test's own: current on the calling thread as long as it lives.
class ResourceLibrary {
  public:
    explicit ResourceLibrary(const std::string& script) {
        std::string path = std::filesystem::temp_directory_path() / "resources-XXXXXX";
        ::close(::mkstemp(path.data()));
        std::ofstream(path) << script;
        module = LoadLibraryA(path.c_str());
        std::filesystem::remove(path);
        EXPECT_NE(module, nullptr);
        AfxSetResourceHandle(module);
    }

    ~ResourceLibrary() {
        AfxSetResourceHandle(before_);
        EXPECT_TRUE(FreeLibrary(module));
    }

    ResourceLibrary(const ResourceLibrary&) = delete;
    ResourceLibrary& operator=(const ResourceLibrary&) = delete;

    HMODULE module;

  private:
    const HINSTANCE before_ = AfxGetResourceHandle();
};

} // namespace support
