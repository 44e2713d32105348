#include "tools/doctor.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace {

constexpr const char* service = "TCP";

/// A socket that is closed with this object.
struct Socket {
    Socket() = default;
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    ~Socket() { ::close(number); }

    const int number = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

/// 0 when a connection from this machine to itself can be made, else a number of errno.
int try_connection() {
    const Socket listener;
    const Socket client;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* const where = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    const bool connected = ::bind(listener.number, where, size) == 0 &&
                           ::listen(listener.number, 1) == 0 &&
                           ::getsockname(listener.number, where, &size) == 0 &&
                           ::connect(client.number, where, size) == 0;
    return connected ? 0 : errno;
}

} // namespace

Diagnosis examine_network() {
    Diagnosis diagnosis;
    if (const int error = try_connection()) {
        diagnosis.add(Level::problem,
                      "This machine cannot connect to itself by TCP: " +
                          std::generic_category().message(error) + ".",
                      "sudo ip link set lo up");
        diagnosis.fails(service, std::generic_category().message(error));
    } else {
        diagnosis.add(Level::ok, "TCP connections can be made.");
        diagnosis.works(service);
    }
    return diagnosis;
}
