#pragma once

#include "platform/windows/wnd.h"
#include "protocols/Protocol.h"
#include "tools/latencies.h"
#include "tools/point_feed.h"

/// The client window of a protocol, as an application has one: it is told of a point, reads it and
/// acknowledges it, so that it sees the last of several that came meanwhile.
class ClientWindow final : public CWnd {
  public:
    /// `tone`: a short tone for each point.
    ClientWindow(_CMMProtocol& protocol, const PointFeed& feed, bool tone);

    /// From the read of the block that completed a point to this window's handler.
    const Latencies& latencies() const { return latencies_; }

    int last_number() const { return last_.number; }

  private:
    LRESULT OnProtocolMessage(WPARAM what, LPARAM);

    _CMMProtocol& protocol_;
    const PointFeed& feed_;
    const bool tone_;
    __PointMMT last_;
    Latencies latencies_;

    DECLARE_MESSAGE_MAP()
};
