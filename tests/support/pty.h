#pragma once

#include <unistd.h>

#include <cstddef>
#include <filesystem>
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

/// A name that stands for one port now and for another one later, as a converter's does.
class PortName {
  public:
    PortName()
        : path(std::filesystem::temp_directory_path() / ("port" + std::to_string(::getpid()))) {}

    ~PortName() { std::filesystem::remove(path); }

    void point_to(const Pty& machine) {
        std::filesystem::remove(path);
        std::filesystem::create_symlink(machine.path(), path);
    }

    const std::filesystem::path path;
};

} // namespace support
