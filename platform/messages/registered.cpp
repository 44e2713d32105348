#include "platform/base/last_error.h"
#include "platform/base/letter_case.h"
#include "platform/base/never_destroyed.h"
#include "platform/messages/message.h"

#include <map>
#include <mutex>
#include <string>

namespace {

constexpr UINT first_number = 0xC000;
constexpr UINT last_number = 0xFFFF;

struct BeforeButForCase {
    bool operator()(const std::string& left, const std::string& right) const {
        return tarnel::before_but_for_case(left, right);
    }
};

struct Names {
    std::mutex names_lock;
    std::map<std::string, UINT, BeforeButForCase> numbers;
};

Names& names() {
    static tarnel::NeverDestroyed<Names> instance;
    return instance.get();
}

} // namespace

UINT RegisterWindowMessageA(LPCSTR name) {
    std::string key(name ? name : "");
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
