#pragma once

#include "platform/base/object.h"

#include <vector>

/// An array of pointers, which it does not own. Positions lie from 0 to below GetSize().
class TARNEL_PLATFORM_API CPtrArray : public CObject {
    DECLARE_DYNAMIC(CPtrArray)

    CPtrArray();
    ~CPtrArray() override;

    INT_PTR GetSize() const { return static_cast<INT_PTR>(pointers_.size()); }

    void* GetAt(INT_PTR position) const { return pointers_[static_cast<std::size_t>(position)]; }

    /// Appends `pointer`; its position.
    INT_PTR Add(void* pointer);

    void RemoveAll() { pointers_.clear(); }

  private:
    std::vector<void*> pointers_;
};

/// The array Base (a CPtrArray) of pointers of the one type Pointer.
template <typename Base, typename Pointer>
class CTypedPtrArray : public Base {
  public:
    Pointer GetAt(INT_PTR position) const { return static_cast<Pointer>(Base::GetAt(position)); }

    Pointer operator[](INT_PTR position) const { return GetAt(position); }

    INT_PTR Add(Pointer pointer) { return Base::Add(pointer); }
};
