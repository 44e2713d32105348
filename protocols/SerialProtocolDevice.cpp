#include "platform/threads/doorbell.h"
#include "protocols/SerialProtocol.h"

#include <algorithm>
#include <chrono>

// How what is received becomes points: on the reader thread, under the protocol's lock.

namespace {

bool is_line_end(char c) {
    return c == '\r' || c == '\n';
}

template <typename Duration, typename Clock>
std::int64_t now() {
    return std::chrono::duration_cast<Duration>(Clock::now().time_since_epoch()).count();
}

} // namespace

tarnel::PointObserver::~PointObserver() = default;

void tarnel::PointObserver::OnBytes(std::span<const char>, const ReadTime&) {}

void tarnel::PointObserver::OnBreak(const ReadTime&) {}

CMMTComDev::CMMTComDev() = default;

CMMTComDev::~CMMTComDev() {
    CloseConnection();
}

int CMMTComDev::OnReadCommBlock() {
    const bool broken = TakeBreak();
    const int count = CComDevice::OnReadCommBlock();
    CMMProtocolRS232* const parent = m_pParent;
    if (parent && (broken || count > 0)) {
        const tarnel::HeldRing client_waits_for_the_lock;
        HandOver({m_pReceiveBuffer.get(), static_cast<std::size_t>(std::max(count, 0))}, broken);
    }
    return count;
}

void CMMTComDev::HandOver(std::span<const char> bytes, bool broken) {
    CMMProtocolRS232& parent = *m_pParent;
    const tarnel::SectionGuard guard(parent.m_Lock);
    tarnel::PointObserver* const observer = parent.m_pObserver;
    if (observer) {
        using namespace std::chrono;
        m_ReadTime = {now<microseconds, system_clock>(), now<nanoseconds, steady_clock>()};
    }
    if (broken) {
        DropRecord();
        if (observer) {
            observer->OnBreak(m_ReadTime);
        }
    }
    if (observer && !bytes.empty()) {
        observer->OnBytes(bytes, m_ReadTime);
    }
    if (broken && !bytes.empty()) {
        bytes = bytes.subspan(1); // perhaps the damaged byte: not even a line end can be trusted
    }
    Receive(bytes);
}

void CMMTComDev::Receive(std::span<const char> bytes) {
    while (!bytes.empty()) {
        if (m_bSkipping) {
            const auto end = std::find_if(bytes.begin(), bytes.end(), is_line_end);
            m_bSkipping = end == bytes.end();
            bytes = {m_bSkipping ? end : end + 1, bytes.end()};
            continue;
        }
        // In pieces that fit, because an overflow may throw away more than the ring holds.
        const auto room = static_cast<std::size_t>(m_Ring.GetTaille() - 1 - m_Ring.GetNbChar());
        if (room == 0) {
            m_Ring.OnDebord();
            continue;
        }
        const std::size_t length = std::min(room, bytes.size());
        m_Ring.Put(bytes.data(), static_cast<int>(length));
        bytes = bytes.subspan(length);
    }
    TakePoints();
}

void CMMTComDev::TakePoints() {
    CMMProtocolRS232& parent = *m_pParent;
    if (!parent.m_pObserver) {
        parent.OnReceiveChar();
        return;
    }
    while (TakeSomePoints()) { // an observer has every point as soon as it is complete
    }
}

/// Whether that took anything out of the ring.
bool CMMTComDev::TakeSomePoints() {
    const int before = m_Ring.GetNbChar();
    m_pParent.load()->OnReceiveChar();
    return m_Ring.GetNbChar() != before;
}

void CMMTComDev::Ring::OnDebord() {
    const bool has_room = device_.TakeSomePoints();
    if (!has_room) {
        device_.DropRecord();
    }
}

/// What is there of the record goes, and so does its rest, up to the next line end.
void CMMTComDev::DropRecord() {
    CMMProtocolRS232& parent = *m_pParent;
    m_Ring.RAZ();
    parent.m_Parse.state = 0;
    parent.m_Parse.value_index = 0;
    parent.resetString();
    ++parent.m_Parse.damaged_records;
    m_bSkipping = true;
}
