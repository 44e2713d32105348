#include "platform/audio/alsa.h"
#include "platform/audio/sound_stream.h"

#include <algorithm>
#include <vector>

namespace tarnel {
namespace {

constexpr unsigned ring_time = 100'000; // microseconds
constexpr BYTE silence = 128;

/// Keeps ALSA from writing to standard error by itself, on this thread, as long as it lives.
class Quiet {
  public:
    Quiet() = default;
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

    ~Quiet() { snd_lib_error_set_local(before_); }

  private:
    static void say_nothing(const char*, int, const char*, int, const char*, va_list) {}

    const snd_local_error_handler_t before_ = snd_lib_error_set_local(&say_nothing);
};

class AlsaStream final : public SoundStream {
  public:
    explicit AlsaStream(snd_pcm_t* pcm) : pcm_(pcm) {}

    ~AlsaStream() override {
        const Quiet quiet;
        snd_pcm_drop(pcm_);
        snd_pcm_close(pcm_);
    }

    /// 0 or a negative number of errno, as everywhere in ALSA.
    int set_up(DWORD rate);

    std::optional<std::size_t> write(std::span<const BYTE> frames) override;
    std::optional<std::uint64_t> unheard() override;
    std::size_t flush() override;

    std::uint64_t margin() const override { return margin_; }

  private:
    int start_with_the_first_frame();

    snd_pcm_t* const pcm_;
    snd_pcm_uframes_t period_ = 0;
    std::uint64_t margin_ = 0;
    bool flushed_ = false;
};

int AlsaStream::set_up(DWORD rate) {
    snd_pcm_uframes_t ring = 0;
    int error = snd_pcm_set_params(pcm_, SND_PCM_FORMAT_U8, SND_PCM_ACCESS_RW_INTERLEAVED, 1, rate,
                                   1, ring_time);
    if (error == 0) {
        error = snd_pcm_get_params(pcm_, &ring, &period_);
        margin_ = period_ + rate / 50; // a period, and some looks at it to do something about it
    }
    return error < 0 ? error : start_with_the_first_frame();
}

/// Behind the last frame the ring is kept silent: a device that runs on for a moment would else
/// repeat what was there before.
int AlsaStream::start_with_the_first_frame() {
    snd_pcm_sw_params_t* params = nullptr;
    snd_pcm_sw_params_alloca(&params);
    snd_pcm_uframes_t boundary = 0;
    snd_pcm_sw_params_current(pcm_, params);
    snd_pcm_sw_params_get_boundary(params, &boundary);
    snd_pcm_sw_params_set_start_threshold(pcm_, params, 1);
    snd_pcm_sw_params_set_silence_threshold(pcm_, params, 0);
    snd_pcm_sw_params_set_silence_size(pcm_, params, boundary);
    return snd_pcm_sw_params(pcm_, params);
}

std::optional<std::size_t> AlsaStream::write(std::span<const BYTE> frames) {
    const Quiet quiet;
    snd_pcm_sframes_t taken = snd_pcm_writei(pcm_, frames.data(), frames.size());
    if (taken == -EPIPE || taken == -ESTRPIPE) { // it ran dry, or the machine was asleep
        const int error = snd_pcm_recover(pcm_, static_cast<int>(taken), 1);
        taken = error < 0 ? error : snd_pcm_writei(pcm_, frames.data(), frames.size());
    }
    if (taken < 0 && taken != -EAGAIN) {
        report_sound(snd_strerror(static_cast<int>(taken)));
        return std::nullopt;
    }
    flushed_ = flushed_ && taken <= 0;
    return static_cast<std::size_t>(std::max<snd_pcm_sframes_t>(taken, 0));
}

std::optional<std::uint64_t> AlsaStream::unheard() {
    const Quiet quiet;
    snd_pcm_sframes_t delay = 0;
    const int error = snd_pcm_delay(pcm_, &delay);
    if (error == -EPIPE || error == -ESTRPIPE) {
        return 0;
    }
    if (error < 0) {
        report_sound(snd_strerror(error));
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(std::max<snd_pcm_sframes_t>(delay, 0));
}

std::size_t AlsaStream::flush() {
    if (flushed_) {
        return 0;
    }
    const auto written = write(std::vector<BYTE>(period_, silence));
    flushed_ = true;
    return written.value_or(0);
}

std::unique_ptr<AlsaStream> open_default(int& error) {
    snd_pcm_t* pcm = nullptr;
    error = -snd_pcm_open(&pcm, "default", SND_PCM_STREAM_PLAYBACK, SND_PCM_NONBLOCK);
    return error == 0 ? std::make_unique<AlsaStream>(pcm) : nullptr;
}

} // namespace

bool sound_device_exists() {
    const Quiet quiet;
    int error = 0;
    open_default(error);
    return error != ENOENT;
}

std::unique_ptr<SoundStream> open_sound_stream(DWORD rate, int& error) {
    const Quiet quiet;
    auto stream = open_default(error);
    if (stream) {
        error = -stream->set_up(rate);
    }
    if (error != 0) {
        report_sound(snd_strerror(-error));
        return nullptr;
    }
    return stream;
}

} // namespace tarnel
