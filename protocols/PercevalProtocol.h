#pragma once

#include "protocols/SerialProtocol.h"

/// "PERCEVAL 1/100": a machine that sends six signed integers a point, in hundredths of a
/// millimetre: the point and a second point. Numbering begins with 0 at each Initialize.
class TARNEL_API PercevalProtocol : public CMMProtocolRS232 {
    DECLARE_DYNCREATE(PercevalProtocol)

    PercevalProtocol();
    ~PercevalProtocol() override;

    int ExtractPoint(__PointMMT& point) override;

    /// Turns the machine's counts into millimetres.
    virtual void ScalePoint(__PointMMT& point);
};

/// "PERCEVAL MICRON": the same in micrometres.
class TARNEL_API PercevalMicronProtocol : public PercevalProtocol {
    DECLARE_DYNCREATE(PercevalMicronProtocol)

    PercevalMicronProtocol();
    ~PercevalMicronProtocol() override;

    void ScalePoint(__PointMMT& point) override;
};
