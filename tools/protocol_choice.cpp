#include "tools/protocol_choice.h"

#include "platform/registry/application.h"
#include "tools/verbs.h"

#include <fmt/format.h>
#include <unistd.h>

const ProtocolRegister& protocol_called(const std::string& name) {
    std::string names;
    for (const auto* node = ProtocolRegister::m_Root; node; node = node->next) {
        if (CLI::detail::to_lower(node->name) == CLI::detail::to_lower(name)) {
            return *node;
        }
        names += (names.empty() ? "" : ", ") + std::string(node->name);
    }
    fail(exit_no_such_protocol,
         fmt::format("There is no protocol '{}': it is one of {}.", name, names));
}

std::unique_ptr<CMMProtocolRS232> make_serial_protocol(const std::string& name) {
    const ProtocolRegister& chosen = protocol_called(name);
    std::unique_ptr<CObject> object(chosen.runtime_class->CreateObject());
    if (!object || !object->IsKindOf(RUNTIME_CLASS(CMMProtocolRS232))) {
        fail(exit_no_such_protocol,
             fmt::format("The protocol {} does not listen to a serial line.", chosen.name));
    }
    return std::unique_ptr<CMMProtocolRS232>(static_cast<CMMProtocolRS232*>(object.release()));
}

void configure(_CMMProtocol& protocol, Line line) {
    CWinApp application;
    application.SetRegistryKey(tool_company);
    application.m_pszProfileName = tool_profile;
    HKEY key = application.GetSectionKey(fmt::format("Monitor\\{}", ::getpid()).c_str());
    if (!key) {
        fail(exit_not_stored, "The settings could not be handed over: your registry, which the "
                              "protocol reads them from, cannot be written.");
    }
    line.m_bConnectOnLoad = FALSE; // its client window comes first
    line.WriteToRegistry(key);
    protocol.ReadFromRegistry(key);
    RegDeleteKeyA(key, "");
    RegCloseKey(key);
}
