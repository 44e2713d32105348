#pragma once

// Messages over TCP by hand, as the minimum to compare with: poll, recv, send, and the same rules
// for where a text ends.

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace byhand {

constexpr unsigned block_size = 65'536;
constexpr char text[] = "A text of 20 bytes.."; // sent with its zero

inline void pause() {
    ::usleep(1'000);
}

inline sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

/// A port that was free a moment ago.
inline int free_port() {
    const int probe = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    ::bind(probe, reinterpret_cast<sockaddr*>(&address), size);
    ::getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size);
    ::close(probe);
    return ntohs(address.sin_port);
}

/// The other process: this program in a role.
class Peer {
  public:
    explicit Peer(const char* role, int count = 0) {
        const std::string place = std::to_string(port), number = std::to_string(count);
        const char* arguments[] = {"/proc/self/exe", role, place.c_str(), number.c_str(), nullptr};
        ::posix_spawn(&process_, *arguments, nullptr, nullptr, const_cast<char**>(arguments),
                      environ);
    }

    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    ~Peer() {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }

    const int port = free_port();

  private:
    pid_t process_ = 0;
};

inline int connect_to(int port) {
    const sockaddr_in address = loopback(port);
    for (;;) {
        const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
            0) {
            const int on = 1;
            ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
            return descriptor;
        }
        ::close(descriptor);
        pause();
    }
}

inline int accept_at(int port) {
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = loopback(port);
    ::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    ::listen(listener, 5);
    const int descriptor = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    ::close(listener);
    return descriptor;
}

/// Waits, and receives what is there; 0 at the end.
inline std::size_t receive(int descriptor, char* buffer, std::size_t size) {
    pollfd entry{descriptor, POLLIN, 0};
    ::poll(&entry, 1, -1);
    const auto count = ::recv(descriptor, buffer, size, 0);
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

inline void send_all(int descriptor, const char* bytes, std::size_t size) {
    while (size > 0) {
        const auto sent = ::send(descriptor, bytes, size, MSG_NOSIGNAL);
        if (sent <= 0) {
            std::exit(1);
        }
        bytes += sent;
        size -= static_cast<std::size_t>(sent);
    }
}

/// Receives texts and calls `on_text` with each, until it says no, or the connection ends.
template <typename OnText>
void receive_texts(int descriptor, OnText on_text) {
    std::string received;
    char buffer[4096];
    while (const std::size_t count = receive(descriptor, buffer, sizeof buffer)) {
        for (std::size_t i = 0; i < count; ++i) {
            const char c = buffer[i];
            if (c != '\0' && c != '\n' && c != '\r') {
                received += c;
            } else if (!received.empty()) {
                if (!on_text(received)) {
                    return;
                }
                received.clear();
            }
        }
    }
}

inline void echo(int port) {
    const int descriptor = accept_at(port);
    receive_texts(descriptor, [&](const std::string& received) {
        send_all(descriptor, received.c_str(), received.size() + 1);
        return true;
    });
}

inline void send_texts(int port, int count, int at_once) {
    const int descriptor = connect_to(port);
    std::string batch;
    for (int i = 0; i < at_once; ++i) {
        batch.append(text, sizeof text);
    }
    for (int i = 0; i < count; i += at_once) {
        send_all(descriptor, batch.data(), batch.size());
    }
    ::close(descriptor);
}

inline void send_blocks(int port, int count) {
    const int descriptor = connect_to(port);
    const std::vector<char> block(block_size, 'x');
    for (int i = 0; i < count; ++i) {
        send_all(descriptor, block.data(), block.size());
    }
    ::close(descriptor);
}

/// Microseconds that `exchange` takes; the given part of `count` calls is faster.
template <typename Exchange>
double delay(double part, int count, Exchange exchange) {
    using Clock = std::chrono::steady_clock;
    std::vector<double> delays;
    for (int i = 0; i < count; ++i) {
        const auto start = Clock::now();
        exchange();
        delays.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    }
    const auto place = static_cast<std::ptrdiff_t>(part * count);
    std::nth_element(delays.begin(), delays.begin() + place, delays.end());
    return delays[static_cast<std::size_t>(place)];
}

inline double round_trip(double part, int count) {
    const Peer peer("echo-by-hand");
    const int descriptor = connect_to(peer.port);
    const double result = delay(part, count, [&] {
        send_all(descriptor, text, sizeof text);
        receive_texts(descriptor, [](const std::string&) { return false; });
    });
    ::close(descriptor);
    return result;
}

/// What comes in a second; the time begins with the first.
template <typename Receive>
double per_second(const char* sender, int count, Receive receive_count) {
    const Peer peer(sender, count);
    const int descriptor = accept_at(peer.port);
    pollfd entry{descriptor, POLLIN, 0};
    ::poll(&entry, 1, -1);
    const auto start = std::chrono::steady_clock::now();
    receive_count(descriptor);
    const double time =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    ::close(descriptor);
    return count / time;
}

inline double texts_received(const char* sender, int count) {
    return per_second(sender, count, [count](int descriptor) {
        int left = count;
        receive_texts(descriptor, [&](const std::string&) { return --left > 0; });
    });
}

inline double megabytes_received(int count) {
    const double blocks = per_second("blocks", count, [count](int descriptor) {
        std::vector<char> block(block_size);
        for (int i = 0; i < count; ++i) {
            for (std::size_t at = 0; at < block.size();) {
                const std::size_t got = receive(descriptor, block.data() + at, block.size() - at);
                if (got == 0) {
                    return;
                }
                at += got;
            }
        }
    });
    return blocks * block_size / 1e6;
}

} // namespace byhand
