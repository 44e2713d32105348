#include "platform/base/collections.h"

IMPLEMENT_DYNAMIC(CPtrArray, CObject)

CPtrArray::CPtrArray() = default;
CPtrArray::~CPtrArray() = default;

INT_PTR CPtrArray::Add(void* pointer) {
    pointers_.push_back(pointer);
    return GetSize() - 1;
}
