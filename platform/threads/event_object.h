#pragma once

#include "platform/threads/waitable.h"

namespace tarnel {

/// What an event's handle stands for.
class Event final : public Waitable {
  public:
    Event(bool manual, bool signalled) : manual_(manual), signalled_(signalled) {}

    /// Unless it is to `keep` the state, the event is reset again when those who wait have passed.
    void set(bool keep = true);

    void reset();

    /// From now on, those who wait for the event serve `source`; null ends that.
    void attach(std::shared_ptr<Source> source);

  private:
    bool is_signalled() const override { return signalled_; }

    void consume() override { signalled_ = manual_; }

    std::shared_ptr<Source> source() const override { return source_; }

    const bool manual_;
    bool signalled_;
    std::shared_ptr<Source> source_;
};

} // namespace tarnel
