#pragma once

#include "protocols/ParseState.h"
#include "protocols/Point.h"
#include "serial/RingBuffer.h"

namespace tarnel {

/// Takes the next METROLEC record out of `ring`. The result is 2 with a measured point in
/// millimetres, numbered by the increased `point_counter`, or NO_POINT: the record is incomplete
/// and stays in the ring, or it was damaged, is gone up to its line end and counted in `parse`. Of
/// a record whose line end is still to come, but which holds a field longer than allowed, a
/// stand-in stays.
int extract_metrolec(ERCirBuf& ring, ParseState& parse, int& point_counter, __PointMMT& point);

} // namespace tarnel
