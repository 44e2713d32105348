#pragma once

#include "tools/stop_signal.h"

#include <functional>

/// A message loop of the calling thread that Ctrl+C ends, as a quit message does: also the nested
/// loop of a dialog. Made before any other thread.
class MessageLoop {
  public:
    MessageLoop();
    MessageLoop(const MessageLoop&) = delete;
    MessageLoop& operator=(const MessageLoop&) = delete;
    ~MessageLoop();

    /// Also called at Ctrl+C, for what else waits on the thread.
    std::function<void()> on_stop;

  private:
    static void wait(void* loop, int descriptor, int milliseconds);

    const StopSignal stop_;
    bool stopped_ = false;
};
