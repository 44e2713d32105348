#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace support {

/// A machine's end of a serial line: the master of a pseudo terminal, whose slave is the port.
class Pty {
  public:
    Pty();
    Pty(const Pty&) = delete;
    Pty& operator=(const Pty&) = delete;

    ~Pty() { unplug(); }

    /// The port's device.
    const std::string& path() const { return path_; }

    int descriptor() const { return master_; }

    /// Sends everything, waiting while the line is full; false when the line is dead.
    bool send(std::string_view bytes);

    /// Receives exactly `count` bytes, or what came before 10 s had passed.
    std::string receive(std::size_t count);

    /// Pulls the cable.
    void unplug();

  private:
    int master_ = -1;
    std::string path_;
};

} // namespace support
