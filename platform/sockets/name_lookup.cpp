#include "platform/sockets/name_lookup.h"

#include "platform/threads/thread.h"
#include "platform/threads/wait.h"

namespace tarnel {

std::shared_ptr<NameLookup> NameLookup::start(std::string host, UINT port,
                                              std::shared_ptr<Doorbell> bell) {
    std::shared_ptr<NameLookup> lookup(new NameLookup(std::move(host), port, std::move(bell)));
    auto shared = std::make_unique<std::shared_ptr<NameLookup>>(lookup);
    const HANDLE thread = CreateThread(nullptr, 0, &NameLookup::run, shared.get(), 0, nullptr);
    if (!thread) {
        return nullptr;
    }
    static_cast<void>(shared.release());
    CloseHandle(thread);
    return lookup;
}

DWORD NameLookup::run(LPVOID self) {
    const std::unique_ptr<std::shared_ptr<NameLookup>> shared(
        static_cast<std::shared_ptr<NameLookup>*>(self));
    NameLookup& lookup = **shared;
    lookup.addresses_ = find_addresses(lookup.host_.c_str(), lookup.port_, false);
    {
        const std::lock_guard guard(lookup.lookup_lock_);
        lookup.done_ = true;
    }
    lookup.bell_->ring();
    return 0;
}

bool NameLookup::done() const {
    const std::lock_guard guard(lookup_lock_);
    return done_;
}

} // namespace tarnel
