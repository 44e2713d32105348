#pragma once

#include "platform/audio/sound_stream.h"
#include "platform/audio/wave_out.h"
#include "platform/threads/event_object.h"

#include <deque>
#include <memory>
#include <mutex>

namespace tarnel {

/// What an HWAVEOUT stands for: the queue of one device. It has no thread: whoever waits for the
/// event serves it, and there it opens its stream, feeds it and closes it when nothing follows.
class WaveOutput final : public Waitable,
                         public Source,
                         public std::enable_shared_from_this<WaveOutput> {
  public:
    WaveOutput(DWORD rate, std::shared_ptr<Event> event) : rate_(rate), event_(std::move(event)) {}

    // Any thread.

    MMRESULT write(WAVEHDR& header);
    MMRESULT unprepare(WAVEHDR& header);
    bool is_queued();
    void reset();

    void handle_closed() override;
    Watch watch() override;
    void serve() override;

  private:
    struct Buffer {
        WAVEHDR* header;
        std::size_t sent = 0;  ///< bytes that the stream has taken
        std::uint64_t end = 0; ///< of the stream's frames, once it has taken all
    };

    bool is_signalled() const override { return false; }

    // All of these under the output's lock.
    void open_stream();
    void change_stream(std::unique_ptr<SoundStream> stream);
    void lose_stream();
    bool send();
    bool send_rest(Buffer& buffer);
    void look();
    bool complete_heard(bool dry_soon);
    bool is_heard(const Buffer& buffer) const;
    void plan();

    const DWORD rate_;
    const std::shared_ptr<Event> event_;
    std::mutex output_lock_;
    std::deque<Buffer> queue_;
    Deadline next_; ///< when there is something to do

    std::unique_ptr<SoundStream> stream_; ///< null while idle
    bool silent_ = false;                 ///< the stream stands in for a device that is lost
    Deadline retry_;                      ///< when to look for that again
    std::uint64_t written_ = 0;           ///< frames, to this stream
    std::uint64_t heard_ = 0;
    Deadline stall_; ///< when a device that makes no progress counts as lost
    Deadline grace_; ///< how long what follows is waited for
};

} // namespace tarnel
