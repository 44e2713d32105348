#pragma once

/// Ctrl+C and the request to end (SIGTERM), as something that a wait looks at. Made before any
/// other thread starts, so that all of them leave the signals to it.
class StopSignal {
  public:
    StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;
    ~StopSignal();

    /// Readable from the signal on.
    int descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};
