#pragma once

#include "platform/base/types.h"

#include <sys/socket.h>

#include <optional>
#include <string>
#include <vector>

namespace tarnel {

/// A host's or socket's address with its port, of IPv4 or IPv6.
struct Address {
    sockaddr_storage storage{};
    socklen_t size = 0;

    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&storage); }

    sockaddr* get() { return reinterpret_cast<sockaddr*>(&storage); }
};

/// All addresses of the machine.
Address any_address(int family, std::uint16_t port);

/// `address` as a socket of `family` takes it; none for an IPv6 address and an IPv4 socket.
std::optional<Address> address_for(int family, const sockaddr* address, socklen_t size);

/// The numeric address, an IPv4 one in its own form whatever the socket's family, and the port.
std::string numeric_address(const Address& address, UINT& port);

/// The addresses of `host` in the resolver's order, none when there is no such host. A numeric
/// address is found at once; a name, unless `numeric_only`, may take its time.
std::vector<Address> find_addresses(const char* host, UINT port, bool numeric_only);

} // namespace tarnel
