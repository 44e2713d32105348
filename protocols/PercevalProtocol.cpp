#include "protocols/PercevalProtocol.h"

#include "core/load_order.h"
#include "protocols/PercevalParser.h"
#include "protocols/ProtocolRegister.h"

IMPLEMENT_DYNCREATE(PercevalProtocol, CMMProtocolRS232)
IMPLEMENT_DYNCREATE(PercevalMicronProtocol, PercevalProtocol)

namespace {

ProtocolRegister hundredths
    TARNEL_LOAD_PLACE(load_perceval_protocol)("PERCEVAL 1/100", RUNTIME_CLASS(PercevalProtocol));
ProtocolRegister micrometres TARNEL_LOAD_PLACE(load_perceval_micron_protocol)(
    "PERCEVAL MICRON", RUNTIME_CLASS(PercevalMicronProtocol));

/// By division: its result is the double nearest to the number of millimetres.
void divide(__PointMMT& point, double counts_per_mm) {
    for (double* const coordinate :
         {&point.x, &point.y, &point.z, &point.x2, &point.y2, &point.z2}) {
        *coordinate /= counts_per_mm;
    }
}

} // namespace

PercevalProtocol::PercevalProtocol() = default;

PercevalProtocol::~PercevalProtocol() {
    CMMProtocolRS232::Disconnect(); // before the reader meets half an object
}

int PercevalProtocol::ExtractPoint(__PointMMT& point) {
    const int type = tarnel::extract_perceval(ring(), m_Parse, point);
    if (type == MEASURED_POINT) {
        ScalePoint(point);
    }
    return type;
}

void PercevalProtocol::ScalePoint(__PointMMT& point) {
    divide(point, 100);
}

PercevalMicronProtocol::PercevalMicronProtocol() = default;

PercevalMicronProtocol::~PercevalMicronProtocol() {
    CMMProtocolRS232::Disconnect();
}

void PercevalMicronProtocol::ScalePoint(__PointMMT& point) {
    divide(point, 1000);
}
