#include "platform/registry/ini_index.h"

#include "platform/base/letter_case.h"
#include "platform/base/never_destroyed.h"
#include "platform/registry/ini_file.h"

#include <cstdint>
#include <mutex>
#include <unordered_set>
#include <utility>

namespace tarnel {
namespace {

std::string_view without_quotes(std::string_view text) {
    const bool quoted = text.size() >= 2 && (text.front() == '"' || text.front() == '\'') &&
                        text.front() == text.back();
    return quoted ? text.substr(1, text.size() - 2) : text;
}

struct LastIndex {
    std::mutex lock_;
    FileStamp stamp_;
    std::shared_ptr<const IniIndex> index_;
};

LastIndex& last_index() {
    static NeverDestroyed<LastIndex> instance;
    return instance.get();
}

} // namespace

std::size_t IniIndex::Hash::operator()(const Name& name) const {
    std::uint64_t hash = 0xCBF29CE484222325; // FNV-1a
    for (const std::string_view part : {name.section, name.key}) {
        for (const char c : part) {
            hash = (hash ^ small_letter(c)) * 0x100000001B3;
        }
    }
    return hash;
}

bool IniIndex::Same::operator()(const Name& left, const Name& right) const {
    return same_but_for_case(left.section, right.section) && same_but_for_case(left.key, right.key);
}

IniIndex::IniIndex(std::string_view bytes) : document_(bytes) {
    std::unordered_set<Name, Hash, Same> known;
    bool inside = false; // a section that counts
    for (std::string_view left = document_.text(); !left.empty();) {
        const IniLine line = take_ini_line(left);
        if (line.kind == IniKind::Section) {
            inside = known.insert({line.name, {}}).second;
            if (inside) {
                sections_.push_back({line.name, {}});
            }
        } else if (line.kind == IniKind::Entry && inside) {
            Section& section = sections_.back();
            if (values_.try_emplace({section.name, line.name}, without_quotes(line.value)).second) {
                section.keys.push_back(line.name);
            }
        }
    }
}

std::optional<std::string_view> IniIndex::value(std::string_view section,
                                                std::string_view key) const {
    const auto found = values_.find({section, key});
    return found == values_.end() ? std::nullopt : std::optional(found->second);
}

std::shared_ptr<const IniIndex> ini_index(const std::string& path) {
    LastIndex& last = last_index();
    FileStamp stamp;
    if (read_stamp(path, stamp)) {
        return nullptr;
    }
    {
        const std::lock_guard guard(last.lock_);
        if (last.index_ && last.stamp_ == stamp) {
            return last.index_;
        }
    }
    FileContent content;
    if (read_file(path, content)) {
        return nullptr;
    }
    auto index = std::make_shared<const IniIndex>(content.bytes);
    if (content.settled) {
        const std::lock_guard guard(last.lock_);
        last.stamp_ = content.stamp;
        last.index_ = index;
    }
    return index;
}

} // namespace tarnel
