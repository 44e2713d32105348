#pragma once

#include "protocols/Point.h"
#include "serial/RingBuffer.h"

namespace tarnel {

/// Takes the next METROLEC record out of `ring`. The result is 2 with a measured point in
/// millimetres, numbered by the increased `point_counter`, or NO_POINT: the record is incomplete
/// and stays in the ring, or it was damaged and is gone up to its line end. Of a record whose line
/// end is still to come, but which holds a field longer than allowed, a stand-in stays.
int extract_metrolec(ERCirBuf& ring, int& point_counter, __PointMMT& point);

} // namespace tarnel
