#pragma once

#include "protocols/ProtocolRegister.h"
#include "protocols/SerialProtocol.h"
#include "tools/line_settings.h"

#include <memory>
#include <string>

constexpr int exit_no_such_protocol = 5;
constexpr int exit_not_stored = 8;

/// The protocol called `name`, in any case of its letters. Where there is none the tool ends, and
/// says which there are.
const ProtocolRegister& protocol_called(const std::string& name);

/// A new object of a protocol that listens to a serial line.
std::unique_ptr<CMMProtocolRS232> make_serial_protocol(const std::string& name);

/// Hands `line` to the protocol as an application does, by a registry key; one for this moment.
void configure(_CMMProtocol& protocol, Line line);
