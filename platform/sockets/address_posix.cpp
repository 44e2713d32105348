#include "platform/sockets/address.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>

#include <array>
#include <cstring>
#include <memory>

namespace tarnel {
namespace {

constexpr std::array<std::uint8_t, 12> mapped_prefix = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};

template <typename SocketAddress>
Address from(const SocketAddress& specific) {
    Address address;
    std::memcpy(&address.storage, &specific, sizeof specific);
    address.size = sizeof specific;
    return address;
}

template <typename SocketAddress>
SocketAddress as(const void* address) {
    SocketAddress specific;
    std::memcpy(&specific, address, sizeof specific);
    return specific;
}

Address mapped(const sockaddr_in& v4) {
    sockaddr_in6 v6{};
    v6.sin6_family = AF_INET6;
    v6.sin6_port = v4.sin_port;
    std::memcpy(&v6.sin6_addr, mapped_prefix.data(), mapped_prefix.size());
    std::memcpy(reinterpret_cast<char*>(&v6.sin6_addr) + mapped_prefix.size(), &v4.sin_addr,
                sizeof v4.sin_addr);
    return from(v6);
}

} // namespace

Address any_address(int family, std::uint16_t port) {
    if (family == AF_INET6) {
        sockaddr_in6 v6{};
        v6.sin6_family = AF_INET6;
        v6.sin6_port = htons(port);
        return from(v6);
    }
    sockaddr_in v4{};
    v4.sin_family = AF_INET;
    v4.sin_port = htons(port);
    return from(v4);
}

std::optional<Address> address_for(int family, const sockaddr* address, socklen_t size) {
    if (address->sa_family == AF_INET && family == AF_INET6) {
        return mapped(as<sockaddr_in>(address));
    }
    Address same;
    if (address->sa_family != family || size > sizeof same.storage) {
        return std::nullopt;
    }
    std::memcpy(&same.storage, address, size);
    same.size = size;
    return same;
}

std::string numeric_address(const Address& address, UINT& port) {
    std::array<char, INET6_ADDRSTRLEN> text{};
    if (address.storage.ss_family == AF_INET) {
        const auto v4 = as<sockaddr_in>(&address.storage);
        port = ntohs(v4.sin_port);
        ::inet_ntop(AF_INET, &v4.sin_addr, text.data(), text.size());
        return text.data();
    }
    const auto v6 = as<sockaddr_in6>(&address.storage);
    port = ntohs(v6.sin6_port);
    const bool is_mapped = IN6_IS_ADDR_V4MAPPED(&v6.sin6_addr);
    const auto* const bytes = reinterpret_cast<const char*>(&v6.sin6_addr);
    ::inet_ntop(is_mapped ? AF_INET : AF_INET6, bytes + (is_mapped ? mapped_prefix.size() : 0),
                text.data(), text.size());
    return text.data();
}

std::vector<Address> find_addresses(const char* host, UINT port, bool numeric_only) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV | (numeric_only ? AI_NUMERICHOST : 0);
    addrinfo* list = nullptr;
    std::vector<Address> addresses;
    if (::getaddrinfo(host, std::to_string(port).c_str(), &hints, &list) != 0) {
        return addresses;
    }
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> owned(list, &::freeaddrinfo);
    for (const addrinfo* entry = list; entry; entry = entry->ai_next) {
        if (auto address = address_for(entry->ai_family, entry->ai_addr, entry->ai_addrlen)) {
            addresses.push_back(*address);
        }
    }
    return addresses;
}

} // namespace tarnel
