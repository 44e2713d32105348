#pragma once

#include "platform/companions/locale_manager_base.h"

#include <stdlib.h>

#include <map>
#include <optional>
#include <string>

namespace support {

/// Changes of the process's environment, taken back when this object ends.
class Environment {
  public:
    Environment() = default;
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    ~Environment() {
        if (spoke_) {
            speak("en"); // also for the tests behind this one
        }
        for (const auto& [name, value] : before_) {
            put(name, value);
        }
    }

    /// Sets the variable `name`, or removes it.
    void set(const std::string& name, const std::optional<std::string>& value) {
        const char* const present = ::getenv(name.c_str());
        before_.try_emplace(name, present ? std::optional<std::string>(present) : std::nullopt);
        put(name, value);
    }

    /// The environment of someone who wants `language`, whatever the rest of it says, with
    /// resource scripts in that folder; the libraries that are there follow.
    void speak(const std::string& language,
               const std::optional<std::string>& resource_folder = std::nullopt) {
        set("LC_ALL", std::nullopt);
        set("LC_MESSAGES", std::nullopt);
        set("LANG", "sv_SE.UTF-8");
        set("LANGUAGE", language);
        set("TARNEL_RESOURCE_DIR", resource_folder);
        lm_reload_resources();
        spoke_ = true;
    }

  private:
    static void put(const std::string& name, const std::optional<std::string>& value) {
        if (value) {
            ::setenv(name.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name.c_str());
        }
    }

    std::map<std::string, std::optional<std::string>> before_;
    bool spoke_ = false;
};

} // namespace support
