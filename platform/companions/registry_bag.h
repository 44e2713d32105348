#pragma once

#include "platform/base/export.h"
#include "platform/companions/property_bag.h"
#include "platform/registry/registry.h"

namespace tarnel {

/// A property bag whose properties are the 32-bit values of `key`, an open key that becomes the
/// bag's. Reading gives E_FAIL for a value of another kind, writing E_INVALIDARG for anything but
/// VT_I4, and E_FAIL when the key refuses. The caller holds the bag, from any thread, and releases
/// it.
TARNEL_PLATFORM_API IPropertyBag* make_registry_bag(HKEY key);

} // namespace tarnel
