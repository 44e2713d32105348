#include "protocols/ProtocolMessages.h"

#include "core/load_order.h"

namespace tarnel {

const RegisteredMessage
    protocol_message TARNEL_LOAD_PLACE(load_protocol_message)("CMMProtocolMessage");
const RegisteredMessage
    track_point_message TARNEL_LOAD_PLACE(load_track_point_message)("CMMProtocolTrackPoint");
const RegisteredMessage enable_modeless_message
    TARNEL_LOAD_PLACE(load_enable_modeless_message)("CMMProtocolEnableModeless");

} // namespace tarnel
