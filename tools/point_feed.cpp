#include "tools/point_feed.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

PointFeed::PointFeed(const _CMMProtocol& protocol, bool with_bytes)
    : protocol_(protocol), with_bytes_(with_bytes),
      bell_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (bell_ < 0) {
        throw std::system_error(errno, std::generic_category(), "no descriptor for points");
    }
}

PointFeed::~PointFeed() {
    ::close(bell_);
}

void PointFeed::OnPoint(const __PointMMT& point, int type, const tarnel::ReadTime& time) {
    if (type != _CMMProtocol::MEASURED_POINT) {
        return;
    }
    if (protocol_.m_bPointAcknowledged) {
        announced_ns_ = time.monotonic_ns;
    }
    append(MeasuredPoint{point, time});
}

void PointFeed::OnBytes(std::span<const char> bytes, const tarnel::ReadTime& time) {
    bytes_ += bytes.size();
    if (with_bytes_) {
        append(ReceivedBlock{{bytes.data(), bytes.size()}, time});
    }
}

void PointFeed::OnBreak(const tarnel::ReadTime& time) {
    append(StreamBreak{time});
}

void PointFeed::take_report(void* feed, std::string_view line) {
    static_cast<PointFeed*>(feed)->append(LineReport{std::string(line.substr(0, line.find('\n')))});
}

void PointFeed::append(FeedItem item) {
    const std::lock_guard guard(lock_);
    items_.push_back(std::move(item));
    if (items_.size() == 1) {
        ::eventfd_write(bell_, 1);
    }
}

void PointFeed::take(std::vector<FeedItem>& items) {
    items.clear();
    const std::lock_guard guard(lock_);
    eventfd_t rung = 0;
    ::eventfd_read(bell_, &rung);
    std::swap(items, items_);
}
