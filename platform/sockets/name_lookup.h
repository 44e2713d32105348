#pragma once

#include "platform/sockets/address.h"
#include "platform/threads/doorbell.h"

#include <memory>
#include <mutex>

namespace tarnel {

/// The look-up of a host's name on a short-lived thread, since nobody can say how long it takes.
/// Who has started it may forget it at any time.
class NameLookup {
  public:
    /// Null when the system starts no more threads. Rings `bell` at the end.
    static std::shared_ptr<NameLookup> start(std::string host, UINT port,
                                             std::shared_ptr<Doorbell> bell);

    bool done() const;

    /// Once it is done.
    const std::vector<Address>& addresses() const { return addresses_; }

  private:
    NameLookup(std::string host, UINT port, std::shared_ptr<Doorbell> bell)
        : host_(std::move(host)), port_(port), bell_(std::move(bell)) {}

    static DWORD run(LPVOID self);

    const std::string host_;
    const UINT port_;
    const std::shared_ptr<Doorbell> bell_;
    mutable std::mutex lookup_lock_;
    bool done_ = false;
    std::vector<Address> addresses_; ///< the look-up's own until it is done
};

} // namespace tarnel
