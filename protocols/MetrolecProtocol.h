#pragma once

#include "protocols/SerialProtocol.h"

/// "METROLEC": a machine or readout that sends a line a point, the coordinates in thousandths of a
/// millimetre and a sign for each axis that tells where it came from. The second point lies one
/// millimetre off along these axes. Numbering begins with 1 and goes on for the object's life.
class TARNEL_API MPOProtocol : public CMMProtocolRS232 {
    DECLARE_DYNCREATE(MPOProtocol)

    MPOProtocol();
    ~MPOProtocol() override;

    int ExtractPoint(__PointMMT& point) override;

  private:
    int m_nPointCounter = 0;
};
