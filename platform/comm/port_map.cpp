#include "platform/comm/port_map.h"

#include "platform/base/last_error.h"
#include "platform/registry/registry.h"

#include <array>
#include <optional>

namespace tarnel {

namespace {

constexpr const char* map_name = "HARDWARE\\DEVICEMAP\\SERIALCOMM";

HKEY root_of(PortMap map) {
    return map == PortMap::user ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
}

/// The key of a map: each value is named after a device, and its text is the COM name.
class MapKey {
  public:
    MapKey() = default;
    MapKey(const MapKey&) = delete;
    MapKey& operator=(const MapKey&) = delete;

    ~MapKey() {
        if (key_) {
            RegCloseKey(key_);
        }
    }

    HKEY get() const { return key_; }

    HKEY* out() { return &key_; }

  private:
    HKEY key_ = nullptr;
};

/// The entry at `index`, with number 0 when it is none of ours; nothing behind the last one.
std::optional<MappedPort> entry_at(HKEY key, DWORD index) {
    std::string path(16'384, '\0'); // the longest name that a value may have, and a zero
    std::array<char, 32> text;
    DWORD path_length = static_cast<DWORD>(path.size());
    DWORD text_size = static_cast<DWORD>(text.size());
    DWORD type = 0;
    const auto error =
        static_cast<DWORD>(RegEnumValueA(key, index, path.data(), &path_length, nullptr, &type,
                                         reinterpret_cast<BYTE*>(text.data()), &text_size));
    if (error == ERROR_MORE_DATA) {
        return MappedPort{0, {}}; // longer than any COM name
    }
    if (error != ERROR_SUCCESS) {
        return std::nullopt;
    }
    path.resize(path_length);
    const std::string_view stored(text.data(), text_size);
    const auto number = com_number(stored.substr(0, stored.find('\0')));
    return MappedPort{type == REG_SZ && number ? *number : 0, path};
}

std::vector<MappedPort> entries_of(HKEY key) {
    std::vector<MappedPort> entries;
    for (DWORD index = 0; const auto entry = entry_at(key, index); ++index) {
        if (entry->number) {
            entries.push_back(*entry);
        }
    }
    return entries;
}

/// Opens the key of `map` for a change; 0 or an error.
DWORD open_for_change(PortMap map, MapKey& key) {
    return static_cast<DWORD>(RegCreateKeyExA(root_of(map), map_name, 0, nullptr,
                                              REG_OPTION_NON_VOLATILE, KEY_READ | KEY_WRITE,
                                              nullptr, key.out(), nullptr));
}

/// Deletes every entry of COM`number`; ERROR_FILE_NOT_FOUND when there is none.
DWORD remove_number(HKEY key, unsigned number) {
    DWORD result = ERROR_FILE_NOT_FOUND;
    for (const MappedPort& entry : entries_of(key)) {
        if (entry.number == number) {
            result = static_cast<DWORD>(RegDeleteValueA(key, entry.path.c_str()));
        }
    }
    return result;
}

} // namespace

std::vector<MappedPort> ports_in(PortMap map) {
    MapKey key;
    const LONG error = RegOpenKeyExA(root_of(map), map_name, 0, KEY_READ, key.out());
    return error ? std::vector<MappedPort>() : entries_of(key.get());
}

DWORD map_port(unsigned number, const std::string& path, PortMap map) {
    MapKey key;
    DWORD error = open_for_change(map, key);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    error = remove_number(key.get(), number);
    if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) {
        return error;
    }
    // A value that is there keeps the spelling of its name; the new one counts.
    RegDeleteValueA(key.get(), path.c_str());
    const std::string text = "COM" + std::to_string(number);
    return static_cast<DWORD>(RegSetValueExA(key.get(), path.c_str(), 0, REG_SZ,
                                             reinterpret_cast<const BYTE*>(text.c_str()),
                                             static_cast<DWORD>(text.size() + 1)));
}

DWORD unmap_port(unsigned number, PortMap map) {
    MapKey key;
    const DWORD error = open_for_change(map, key);
    return error == ERROR_SUCCESS ? remove_number(key.get(), number) : error;
}

} // namespace tarnel
