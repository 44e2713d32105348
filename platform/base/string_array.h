#pragma once

#include "platform/base/string.h"

#include <vector>

/// An array of texts. Positions lie from 0 to below GetSize().
class CStringArray {
  public:
    INT_PTR GetSize() const { return static_cast<INT_PTR>(texts_.size()); }

    /// Appends a copy of `text`; its position.
    INT_PTR Add(const CString& text) {
        texts_.push_back(text);
        return GetSize() - 1;
    }

    const CString& operator[](INT_PTR position) const {
        return texts_[static_cast<std::size_t>(position)];
    }

    void RemoveAll() { texts_.clear(); }

  private:
    std::vector<CString> texts_;
};
