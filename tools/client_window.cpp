#include "tools/client_window.h"

#include <chrono>

namespace {

const UINT protocol_message = RegisterWindowMessageA("CMMProtocolMessage");

constexpr unsigned tone_hertz = 1760;
constexpr unsigned tone_milliseconds = 60;
constexpr int newer_tone_replaces_it = 1;

std::int64_t now_ns() {
    using namespace std::chrono;
    return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace

BEGIN_MESSAGE_MAP(ClientWindow, CWnd)
ON_REGISTERED_MESSAGE(protocol_message, OnProtocolMessage)
END_MESSAGE_MAP()

ClientWindow::ClientWindow(_CMMProtocol& protocol, const PointFeed& feed, bool tone)
    : protocol_(protocol), feed_(feed), tone_(tone) {
    CreateEx(0, AfxRegisterWndClass(0), "Points", WS_POPUP, RECT{}, nullptr, 0);
}

LRESULT ClientWindow::OnProtocolMessage(WPARAM what, LPARAM) {
    if (what != _CMMProtocol::MEASURED_POINT) {
        return 0;
    }
    {
        const tarnel::SectionGuard guard(protocol_.m_Lock);
        last_ = protocol_.m_LastPoint;
        latencies_.add(now_ns() - feed_.announced_ns());
        protocol_.AcknowledgeLastPoint();
    }
    if (tone_) {
        protocol_.OutputSpeakerSound(tone_hertz, tone_milliseconds, newer_tone_replaces_it);
    }
    return 0;
}
