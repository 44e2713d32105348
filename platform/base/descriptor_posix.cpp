#include "platform/base/descriptor.h"

#include <unistd.h>

namespace tarnel {

Descriptor::~Descriptor() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

} // namespace tarnel
