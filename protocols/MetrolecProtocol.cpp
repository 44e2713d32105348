#include "protocols/MetrolecProtocol.h"

#include "core/load_order.h"
#include "protocols/MetrolecParser.h"
#include "protocols/ProtocolRegister.h"

IMPLEMENT_DYNCREATE(MPOProtocol, CMMProtocolRS232)

namespace {

ProtocolRegister registration TARNEL_LOAD_PLACE(load_metrolec_protocol)("METROLEC",
                                                                        RUNTIME_CLASS(MPOProtocol));

} // namespace

MPOProtocol::MPOProtocol() = default;

MPOProtocol::~MPOProtocol() {
    CMMProtocolRS232::Disconnect(); // before the reader meets half an object
}

int MPOProtocol::ExtractPoint(__PointMMT& point) {
    return tarnel::extract_metrolec(ring(), m_Parse, m_nPointCounter, point);
}
