#pragma once

#include "platform/base/descriptor.h"

#include <cstdint>

namespace tarnel {

/// A TCP socket that does not wait, of both families where the machine has IPv6, on local port
/// `port` (0: any) of all addresses. None, with errno, when that fails.
Descriptor make_stream_socket(std::uint16_t port);

int family_of(int descriptor);

/// What holds at this moment, in the bits of epoll.
std::uint32_t state_of(int descriptor);

} // namespace tarnel
