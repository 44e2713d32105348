// Any bytes from a machine, in any blocks: the same points as of the whole text, and no coordinate
// that is no number. FUZZED is the machine's receiver, MODEL what its points are made by.

#include "tests/protocols/receiver.h"
#include "tests/protocols/record_model.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

/// The first byte of the input says how long the blocks are; a text is no longer than the ring.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > 1000) {
        return 0;
    }
    std::size_t length = 1 + data[0];
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const auto points = points_of<FUZZED>(text, [&] {
        length = length * 5 % 257; // one of 1 to 256, another each time
        return length;
    });
    const bool finite = std::all_of(points.begin(), points.end(), [](const __PointMMT& p) {
        return std::isfinite(p.x + p.y + p.z + p.x2 + p.y2 + p.z2);
    });
    if (!finite || !same(points, MODEL(text))) {
        std::abort();
    }
    return 0;
}
