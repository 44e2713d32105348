// Loads a plug-in with a protocol of its own, and measures with it: plugin_host PLUG-IN PORT COUNT

#include "platform/messages/message.h"
#include "protocols/ProtocolRegister.h"
#include "protocols/SerialProtocol.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

/// Measures `count` points with the protocol that was registered last. Of points that come at once
/// the window is told one time, and reads the last.
bool measure(const char* port, int count) {
    const ProtocolRegister& newest = *ProtocolRegister::m_Root;
    CWnd client; // outlives the protocol
    const std::unique_ptr<CMMProtocolRS232> protocol(
        static_cast<CMMProtocolRS232*>(newest.runtime_class->CreateObject()));
    client.CreateEx(0, AfxRegisterWndClass(0), "", 0, RECT{}, nullptr, 0);
    protocol->Initialize(&client);
    protocol->m_Device.m_Configuration.SetPortName(port);
    if (!protocol->Connect()) {
        return false;
    }
    const UINT point_message = RegisterWindowMessageA("CMMProtocolMessage");
    int seen = 0;
    for (MSG message; seen < count && GetMessageA(&message, nullptr, 0, 0) > 0;) {
        if (message.message == point_message) {
            const tarnel::SectionGuard guard(protocol->m_Lock);
            seen = protocol->m_LastPoint.number;
            std::printf("%s %d: %.3f mm\n", newest.name, seen, protocol->m_LastPoint.x);
            protocol->AcknowledgeLastPoint();
        }
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    void* const plugin = argc > 3 ? ::dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : nullptr;
    if (!plugin) {
        std::fprintf(stderr, "%s\n", argc > 3 ? ::dlerror() : "plugin_host PLUG-IN PORT COUNT");
        return 2;
    }
    const bool measured = measure(argv[2], std::atoi(argv[3]));
    ::dlclose(plugin); // when no object of it is left
    return measured ? 0 : 1;
}
