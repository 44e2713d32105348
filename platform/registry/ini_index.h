#pragma once

#include "platform/registry/ini_document.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tarnel {

/// An INI file to look things up in. Of sections and entries of one name the first counts.
class IniIndex {
  public:
    explicit IniIndex(std::string_view bytes);
    IniIndex(const IniIndex&) = delete;
    IniIndex& operator=(const IniIndex&) = delete;

    /// The value without the quotes around it.
    std::optional<std::string_view> value(std::string_view section, std::string_view key) const;

    struct Section {
        std::string_view name;
        std::vector<std::string_view> keys;
    };

    /// In the file's order.
    const std::vector<Section>& sections() const { return sections_; }

  private:
    struct Name {
        std::string_view section;
        std::string_view key;
    };

    struct Hash {
        std::size_t operator()(const Name& name) const;
    };

    struct Same {
        bool operator()(const Name& left, const Name& right) const;
    };

    const IniDocument document_; // of which all the names and values are parts
    std::vector<Section> sections_;
    std::unordered_map<Name, std::string_view, Hash, Same> values_;
};

/// The file's index, null when it cannot be read. That of the file that was read last is kept until
/// somebody changes it. From any thread.
std::shared_ptr<const IniIndex> ini_index(const std::string& path);

} // namespace tarnel
