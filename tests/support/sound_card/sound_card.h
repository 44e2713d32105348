#pragma once

#include "platform/base/types.h"
#include "tests/support/environment.h"

#include <filesystem>
#include <string>
#include <vector>

namespace support {

/// The system's default sound device for as long as this object lives, also for programs that the
/// test starts: it plays in real time, into a file.
class SoundCard {
  public:
    /// Plays at `rate`, which is that of tones.
    explicit SoundCard(unsigned rate = 22050);
    SoundCard(const SoundCard&) = delete;
    SoundCard& operator=(const SoundCard&) = delete;
    ~SoundCard();

    /// What has come out of it so far, unsigned 8 bit; what was dropped before is not in it.
    std::vector<BYTE> heard() const;

    std::size_t open_streams() const;

    // Its troubles, one at a time.

    void set_busy(bool busy) { set("busy", busy); }

    void set_unplugged(bool unplugged) { set("gone", unplugged); }

    void set_stuck(bool stuck) { set("stuck", stuck); }

  private:
    void set(const std::string& name, bool there) const;
    std::string read(const std::string& name) const;

    const std::filesystem::path folder_;
    Environment environment_;
};

/// A system without any sound device.
class NoSoundCard {
  public:
    NoSoundCard() { environment_.set("ALSA_CONFIG_PATH", "/dev/null"); }

  private:
    Environment environment_;
};

} // namespace support
