#pragma once

#include "protocols/PointObserver.h"
#include "protocols/Protocol.h"

#include <mutex>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

struct MeasuredPoint {
    __PointMMT point;
    tarnel::ReadTime time;
};

/// A block of bytes as it was read.
struct ReceivedBlock {
    std::string bytes;
    tarnel::ReadTime time;
};

/// The record around this place was dropped.
struct StreamBreak {
    tarnel::ReadTime time;
};

/// A line of the layer's: what has become of the port.
struct LineReport {
    std::string text;
};

using FeedItem = std::variant<MeasuredPoint, ReceivedBlock, StreamBreak, LineReport>;

/// Hands over what the reader thread observes, all of it and in its order, to the tool's thread. It
/// grows while the tool's thread is slower than the line; the reader never waits for it.
class PointFeed final : public tarnel::PointObserver {
  public:
    /// `with_bytes`: the blocks too, not only what becomes of them.
    PointFeed(const _CMMProtocol& protocol, bool with_bytes);
    PointFeed(const PointFeed&) = delete;
    PointFeed& operator=(const PointFeed&) = delete;
    ~PointFeed() override;

    void OnPoint(const __PointMMT& point, int type, const tarnel::ReadTime& time) override;
    void OnBytes(std::span<const char> bytes, const tarnel::ReadTime& time) override;
    void OnBreak(const tarnel::ReadTime& time) override;

    /// A sink of reports; any thread.
    static void take_report(void* feed, std::string_view line);

    /// Readable while there is something to take.
    int descriptor() const { return bell_; }

    /// Exchanges `items`, emptied, for all that has come.
    void take(std::vector<FeedItem>& items);

    /// When the block was read whose point is announced to the client window, and how many bytes
    /// have been read: under the protocol's lock.
    std::int64_t announced_ns() const { return announced_ns_; }

    std::uint64_t bytes() const { return bytes_; }

  private:
    void append(FeedItem item);

    const _CMMProtocol& protocol_;
    const bool with_bytes_;
    const int bell_;
    std::int64_t announced_ns_ = 0;
    std::uint64_t bytes_ = 0;
    std::mutex lock_;
    std::vector<FeedItem> items_;
};
