// A sound card for tests, as a plug-in of ALSA: it plays 8-bit mono in real time, into a file. It
// lives in a folder, whose files are its sockets and switches; see sound_card.h.

#include "platform/audio/alsa.h"

#include <alsa/pcm_external.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace {

class Card {
  public:
    using Clock = std::chrono::steady_clock;

    explicit Card(std::filesystem::path folder)
        : folder_(std::move(folder)), heard_(folder_ / "heard", std::ios::binary | std::ios::app) {
        note_stream('+');
        io.version = SND_PCM_IOPLUG_VERSION;
        io.name = "Test card";
        io.poll_fd = -1;
        io.private_data = this;
    }

    Card(const Card&) = delete;
    Card& operator=(const Card&) = delete;

    ~Card() { note_stream('-'); }

    static bool is_switched(const std::filesystem::path& folder, const char* name) {
        return std::filesystem::exists(folder / name);
    }

    int start() {
        started_ = Clock::now();
        played_ = 0;
        return gone();
    }

    int stop() {
        play();
        ring_.clear();
        return gone();
    }

    int gone() const { return is_switched(folder_, "gone") ? -ENODEV : 0; }

    /// The place in the ring, or that it ran dry.
    snd_pcm_sframes_t pointer() {
        const bool dry = !play();
        return dry ? -EPIPE : static_cast<snd_pcm_sframes_t>(position_ % io.buffer_size);
    }

    void take(const char* frames, std::size_t count) { ring_.append(frames, count); }

    snd_pcm_sframes_t delay() {
        play();
        return static_cast<snd_pcm_sframes_t>(ring_.size());
    }

    snd_pcm_ioplug_t io{};

  private:
    void note_stream(char mark) const { std::ofstream(folder_ / "streams", std::ios::app) << mark; }

    /// Plays what is due by now; false when there was less than that.
    bool play() {
        if (is_switched(folder_, "stuck") || io.state != SND_PCM_STATE_RUNNING) {
            return true;
        }
        const std::chrono::duration<double> time = Clock::now() - started_;
        const auto due = static_cast<std::uint64_t>(time.count() * io.rate) - played_;
        const std::size_t count = std::min<std::uint64_t>(due, ring_.size());
        heard_.write(ring_.data(), static_cast<std::streamsize>(count)).flush();
        ring_.erase(0, count);
        played_ += count;
        position_ += count;
        return due == count;
    }

    const std::filesystem::path folder_;
    std::ofstream heard_;
    std::string ring_; ///< what was written and not played yet
    Clock::time_point started_;
    std::uint64_t played_ = 0; ///< since then
    std::uint64_t position_ = 0;
};

Card& card_of(snd_pcm_ioplug_t* io) {
    return *static_cast<Card*>(io->private_data);
}

snd_pcm_ioplug_callback_t callbacks() {
    using Io = snd_pcm_ioplug_t;
    snd_pcm_ioplug_callback_t all{};
    all.start = [](Io* io) { return card_of(io).start(); };
    all.stop = [](Io* io) { return card_of(io).stop(); };
    all.prepare = [](Io* io) { return card_of(io).gone(); };
    all.pointer = [](Io* io) { return card_of(io).pointer(); };
    all.transfer = [](Io* io, const snd_pcm_channel_area_t* areas, snd_pcm_uframes_t offset,
                      snd_pcm_uframes_t size) {
        card_of(io).take(static_cast<const char*>(areas->addr) + areas->first / 8 + offset, size);
        return static_cast<snd_pcm_sframes_t>(size);
    };
    all.delay = [](Io* io, snd_pcm_sframes_t* frames) {
        *frames = card_of(io).delay();
        return card_of(io).gone();
    };
    all.close = [](Io* io) {
        delete &card_of(io);
        return 0;
    };
    return all;
}

const snd_pcm_ioplug_callback_t card_callbacks = callbacks();

int offer(snd_pcm_ioplug_t& io, unsigned rate) {
    const unsigned access[] = {SND_PCM_ACCESS_RW_INTERLEAVED, SND_PCM_ACCESS_MMAP_INTERLEAVED};
    const unsigned format = SND_PCM_FORMAT_U8;
    int error = snd_pcm_ioplug_set_param_list(&io, SND_PCM_IOPLUG_HW_ACCESS, 2, access);
    error |= snd_pcm_ioplug_set_param_list(&io, SND_PCM_IOPLUG_HW_FORMAT, 1, &format);
    error |= snd_pcm_ioplug_set_param_minmax(&io, SND_PCM_IOPLUG_HW_CHANNELS, 1, 1);
    error |= snd_pcm_ioplug_set_param_minmax(&io, SND_PCM_IOPLUG_HW_RATE, rate, rate);
    error |= snd_pcm_ioplug_set_param_minmax(&io, SND_PCM_IOPLUG_HW_PERIOD_BYTES, 64, 8192);
    error |= snd_pcm_ioplug_set_param_minmax(&io, SND_PCM_IOPLUG_HW_BUFFER_BYTES, 256, 32768);
    return error;
}

const char* text_of(snd_config_t* settings, const char* name) {
    const char* text = nullptr;
    snd_config_t* node = nullptr;
    if (snd_config_search(settings, name, &node) == 0) {
        snd_config_get_string(node, &text);
    }
    return text;
}

} // namespace

#pragma GCC visibility push(default)

extern "C" {

SND_PCM_PLUGIN_SYMBOL(tarnel_test)

int SND_PCM_PLUGIN_ENTRY(tarnel_test)(snd_pcm_t** pcm, const char* name, snd_config_t*,
                                      snd_config_t* settings, snd_pcm_stream_t stream, int mode) {
    const std::filesystem::path folder = text_of(settings, "folder");
    for (const auto& [trouble, error] : {std::pair{"busy", EBUSY}, {"gone", ENODEV}}) {
        if (Card::is_switched(folder, trouble)) {
            return -error;
        }
    }
    auto card = std::make_unique<Card>(folder);
    card->io.callback = &card_callbacks;
    int error = snd_pcm_ioplug_create(&card->io, name, stream, mode);
    if (error == 0) {
        snd_config_t* node = nullptr;
        long rate = 0;
        snd_config_search(settings, "rate", &node);
        snd_config_get_integer(node, &rate);
        error = offer(card->io, static_cast<unsigned>(rate));
        *pcm = card.release()->io.pcm; // closing it deletes the card
    }
    return error;
}
}

#pragma GCC visibility pop
