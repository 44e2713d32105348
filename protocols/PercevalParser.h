#pragma once

#include "protocols/ParseState.h"
#include "protocols/Point.h"
#include "serial/RingBuffer.h"

namespace tarnel {

/// Takes characters out of `ring` up to the end of the next PERCEVAL record and keeps in `parse`
/// what has been read of it. The result is 2 with a measured point, its coordinates as the machine
/// has sent them, numbered by `parse.point_counter` before it is increased; or NO_POINT when no
/// character is left. A record with a field of 200 or more characters, or with a value that no
/// 32-bit number holds, is thrown away up to its line end.
int extract_perceval(ERCirBuf& ring, ParseState& parse, __PointMMT& point);

} // namespace tarnel
