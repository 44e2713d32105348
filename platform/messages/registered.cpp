#include "platform/base/last_error.h"
#include "platform/base/never_destroyed.h"
#include "platform/messages/message.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <string>

namespace {

constexpr UINT first_number = 0xC000;
constexpr UINT last_number = 0xFFFF;

struct Names {
    std::mutex names_lock;
    std::map<std::string, UINT> numbers;
};

Names& names() {
    static tarnel::NeverDestroyed<Names> instance;
    return instance.get();
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

UINT RegisterWindowMessageA(LPCSTR name) {
    std::string key(name ? name : "");
    std::ranges::transform(key, key.begin(), lower);
    Names& registered = names();
    const std::lock_guard guard(registered.names_lock);
    const auto found = registered.numbers.find(key);
    if (found != registered.numbers.end()) {
        return found->second;
    }
    const UINT number = first_number + static_cast<UINT>(registered.numbers.size());
    if (key.empty() || number > last_number) {
        SetLastError(key.empty() ? ERROR_INVALID_PARAMETER : ERROR_NO_SYSTEM_RESOURCES);
        return 0;
    }
    registered.numbers.emplace(std::move(key), number);
    return number;
}
