// Any bytes from a METROLEC machine, in any blocks: the same points as of the whole text, and no
// coordinate that is no number.

#include "tests/fuzz/blocks.h"
#include "tests/protocols/record_model.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    check_blocks<Metrolec>(data, size, metrolec_points);
    return 0;
}
