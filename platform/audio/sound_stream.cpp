#include "platform/audio/sound_stream.h"

#include "platform/base/diagnostics.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <string>

namespace tarnel {
namespace {

class SilentStream final : public SoundStream {
  public:
    explicit SilentStream(DWORD rate) : rate_(rate) {}

    std::optional<std::size_t> write(std::span<const BYTE> frames) override {
        const std::chrono::duration<double> time(static_cast<double>(frames.size()) / rate_);
        end_ = std::max(end_, Clock::now()) + std::chrono::duration_cast<Clock::duration>(time);
        return frames.size();
    }

    std::optional<std::uint64_t> unheard() override {
        const std::chrono::duration<double> left = end_ - Clock::now();
        return static_cast<std::uint64_t>(std::max(left.count(), 0.0) * rate_);
    }

    std::uint64_t margin() const override { return 0; }

    std::size_t flush() override { return 0; }

  private:
    using Clock = std::chrono::steady_clock;

    const DWORD rate_;
    Clock::time_point end_;
};

} // namespace

std::unique_ptr<SoundStream> make_silent_stream(DWORD rate) {
    return std::make_unique<SilentStream>(rate);
}

void report_sound(const char* trouble) {
    static std::atomic<bool> troubled = false;
    if (troubled.exchange(trouble != nullptr) != (trouble != nullptr)) {
        report(trouble ? "Sound output fails: " + std::string(trouble)
                       : "Sound output works again");
    }
}

} // namespace tarnel
