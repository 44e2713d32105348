#pragma once

#include "platform/base/types.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace tarnel {

/// Where sound goes: frames of one byte each, at the rate that the stream was opened with. Its
/// destructor stops the sound at once. Not for two threads at a time.
class SoundStream {
  public:
    SoundStream() = default;
    SoundStream(const SoundStream&) = delete;
    SoundStream& operator=(const SoundStream&) = delete;
    virtual ~SoundStream() = default;

    /// Takes as many frames as there is room for now; nothing when the device is lost.
    virtual std::optional<std::size_t> write(std::span<const BYTE> frames) = 0;

    /// How many frames have been written and not been heard; nothing when the device is lost.
    virtual std::optional<std::uint64_t> unheard() = 0;

    /// With no more than so many unheard frames it may soon run dry, the last of them unheard: a
    /// converter of the sampling rate hands on whole periods only.
    virtual std::uint64_t margin() const = 0;

    /// Nothing follows for now: pushes the last frames out. How many frames of silence this wrote,
    /// none the second time.
    virtual std::size_t flush() = 0;
};

/// Whether the system has a default sound device, be it in use elsewhere.
bool sound_device_exists();

/// Opens that device. Null with a number of errno, EINVAL when it cannot play at this rate.
std::unique_ptr<SoundStream> open_sound_stream(DWORD rate, int& error);

/// Stands in for a device that is lost: all is heard in time, by nobody.
std::unique_ptr<SoundStream> make_silent_stream(DWORD rate);

/// Reports when sound begins to fail (`trouble` says why) and when it works again (null).
void report_sound(const char* trouble);

} // namespace tarnel
