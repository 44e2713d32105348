#pragma once

#include "core/export.h"
#include "protocols/Point.h"

#include <cstdint>
#include <span>

namespace tarnel {

/// When a block of bytes was read from the line.
struct ReadTime {
    std::int64_t utc_us = 0;       ///< microseconds since 1970, in UTC
    std::int64_t monotonic_ns = 0; ///< nanoseconds of a clock that never jumps
};

/// The road for those who may not miss a point. A client window is told of a point only when it has
/// acknowledged the one before, so a busy client sees the last of several; an observer sees each of
/// them, and everything else that the line brings.
///
/// All calls come on the protocol's reader thread, under its lock, in the order of the stream. They
/// must not block, nor call back into the protocol: copy what is needed and go.
class TARNEL_API PointObserver {
  public:
    virtual ~PointObserver();

    /// A point, before it is announced. `type` is a _CMMProtocol::TYPE; `time` that of the block
    /// that completed the record.
    virtual void OnPoint(const __PointMMT& point, int type, const ReadTime& time) = 0;

    /// A block of bytes as it was read, before any point in it.
    virtual void OnBytes(std::span<const char> bytes, const ReadTime& time);

    /// Bytes are missing or damaged before those that come next: the record around this place is
    /// dropped.
    virtual void OnBreak(const ReadTime& time);
};

} // namespace tarnel
