// Any bytes from a PERCEVAL machine, in any blocks: the same points as of the whole text, and no
// coordinate that is no number.

#include "tests/fuzz/blocks.h"
#include "tests/protocols/record_model.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    check_blocks<Perceval>(data, size, perceval_points);
    return 0;
}
