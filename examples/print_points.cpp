// Prints each point that a machine measures: print_points METROLEC COM3: [count]
// A busy window sees only the last of several points; an observer sees every one of them.

#include "platform/messages/message.h"
#include "protocols/ProtocolRegister.h"
#include "protocols/SerialProtocol.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

namespace {

/// Takes the points on the protocol's thread, where nothing may take long.
class Collector final : public tarnel::PointObserver {
  public:
    void OnPoint(const __PointMMT& point, int type, const tarnel::ReadTime&) override {
        if (type == _CMMProtocol::MEASURED_POINT) {
            const std::lock_guard guard(lock_);
            points_.push_back(point);
        }
    }

    std::vector<__PointMMT> take() {
        const std::lock_guard guard(lock_);
        return std::exchange(points_, {});
    }

  private:
    std::mutex lock_;
    std::vector<__PointMMT> points_;
};

std::unique_ptr<CMMProtocolRS232> make_protocol(std::string_view name) {
    for (const auto* node = ProtocolRegister::m_Root; node; node = node->next) {
        if (name == node->name) { // those of other machines may have no serial line
            std::unique_ptr<CObject> made(node->runtime_class->CreateObject());
            if (made->IsKindOf(RUNTIME_CLASS(CMMProtocolRS232))) {
                return std::unique_ptr<CMMProtocolRS232>(
                    static_cast<CMMProtocolRS232*>(made.release()));
            }
        }
    }
    return nullptr;
}

} // namespace

int main(int argc, char** argv) {
    CWnd client; // is told that there are points; it and the collector outlive the protocol
    Collector collector;
    const auto protocol = argc > 2 ? make_protocol(argv[1]) : nullptr;
    if (!protocol) {
        std::fprintf(stderr, "Usage: print_points PROTOCOL PORT [COUNT]\n");
        return 2;
    }
    client.CreateEx(0, AfxRegisterWndClass(0), "", 0, RECT{}, nullptr, 0);
    protocol->Initialize(&client);
    protocol->SetPointObserver(&collector);
    protocol->m_Device.m_Configuration.SetPortName(argv[2]);
    if (!protocol->Connect()) {
        return 1; // a message box, here a line on standard error, has told why
    }
    int left = argc > 3 ? std::atoi(argv[3]) : 0; // 0: until Ctrl+C
    for (MSG message; GetMessageA(&message, nullptr, 0, 0) > 0;) {
        protocol->AcknowledgeLastPoint(); // first, so that later ones are told again
        for (const __PointMMT& p : collector.take()) {
            std::printf("%d  %.3f  %.3f  %.3f mm\n", p.number, p.x, p.y, p.z);
            if (--left == 0) {
                return 0;
            }
        }
    }
}
