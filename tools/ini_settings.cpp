#include "platform/base/last_error.h"
#include "platform/registry/ini_profile.h"
#include "tools/settings_store.h"
#include "tools/verbs.h"

#include <fmt/format.h>

#include <filesystem>
#include <fstream>

// Settings in an INI file.

namespace {

/// Names that end with a zero each.
std::vector<std::string> split_names(const std::string& list) {
    std::vector<std::string> names;
    for (std::size_t start = 0; start < list.size(); start += names.back().size() + 1) {
        names.emplace_back(list.c_str() + start);
    }
    return names;
}

class IniSettings final : public SettingsStore {
  public:
    explicit IniSettings(std::string file) : file_(std::move(file)) {}

    std::optional<Setting> find(const std::string& section,
                                const std::string& entry) const override {
        check_readable();
        const std::string value = ask(section.c_str(), entry.c_str(), "");
        if (value.empty() && !ask(section.c_str(), entry.c_str(), "missing").empty()) {
            return {};
        }
        return Setting{section, entry, "text", value};
    }

    std::vector<Setting> list(const std::string& section) const override {
        check_readable();
        std::vector<Setting> all;
        for (const std::string& name : section.empty() ? split_names(ask(nullptr, nullptr, ""))
                                                       : std::vector<std::string>{section}) {
            add_section(name, all);
        }
        return all;
    }

    LocalMachineRegistry writer() const override { return {nullptr, file_.c_str(), nullptr}; }

    void fail_to_write() const override {
        switch (const DWORD error = GetLastError()) {
        case ERROR_ACCESS_DENIED:
            fail(exit_no_rights_to_settings,
                 fmt::format("You may not write {}: it takes the right to change the file and its "
                             "folder.",
                             file_));
        case ERROR_INVALID_PARAMETER:
            fail(exit_bad_setting_name,
                 "An INI file cannot keep that: no line ends, no ] in a section, no = in an entry, "
                 "which begins with neither [ nor ;");
        default:
            fail(exit_setting_not_stored,
                 fmt::format("{} could not be written (error {}).", file_, error));
        }
    }

  private:
    void check_readable() const {
        std::error_code error;
        if (std::filesystem::exists(file_, error) && !std::ifstream(file_)) {
            fail(exit_no_rights_to_settings, fmt::format("You may not read {}.", file_));
        }
    }

    /// The whole answer, however long.
    std::string ask(const char* section, const char* entry, const char* otherwise) const {
        std::string text;
        for (DWORD size = 4096;; size *= 2) {
            text.resize(size);
            const DWORD count = GetPrivateProfileStringA(section, entry, otherwise, text.data(),
                                                         size, file_.c_str());
            if (count + 2 < size) {
                text.resize(count);
                return text;
            }
        }
    }

    void add_section(const std::string& section, std::vector<Setting>& all) const {
        const std::string entries = ask(section.c_str(), nullptr, "missing"); // has no zero
        if (entries.empty()) {
            all.push_back({section, "", "", ""});
        } else if (entries != "missing") {
            for (const std::string& entry : split_names(entries)) {
                all.push_back({section, entry, "text", ask(section.c_str(), entry.c_str(), "")});
            }
        }
    }

    const std::string file_;
};

} // namespace

std::unique_ptr<SettingsStore> ini_settings(const std::string& file) {
    return std::make_unique<IniSettings>(std::filesystem::absolute(file));
}
