#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

#include <cstring>
#include <string>

/// The framework's narrow text: characters in the process's code page, which is UTF-8 here, and a
/// length. Embedded zeros stay in it; comparing and converting see the text up to the first zero.
class CString {
  public:
    CString() = default;

    /// A null pointer gives the empty text.
    CString(LPCSTR text) : text_(text ? text : "") {}

    CString(LPCSTR text, int length) : text_(text, static_cast<std::size_t>(length)) {}

    operator LPCSTR() const { return text_.c_str(); }

    LPCSTR GetString() const { return text_.c_str(); }

    int GetLength() const { return static_cast<int>(text_.size()); }

    BOOL IsEmpty() const { return text_.empty(); }

    CString& operator+=(const CString& other) {
        text_ += other.text_;
        return *this;
    }

    /// Replaces the text by `format` with an int for each "%d" and a text for each "%s", whatever
    /// the locale; "%%" is a percent sign. Other conversions are not known: their character stands
    /// for itself. A CString among the arguments is given as GetString().
    TARNEL_PLATFORM_API void Format(LPCSTR format, ...) __attribute__((format(printf, 2, 3)));

    /// Replaces the text by `format` with `insert` for each "%1" or "%1!d!"; "%%" is a percent
    /// sign,
    /// "%n" a line end, and "%0" ends the text. Anything else stays as it is.
    TARNEL_PLATFORM_API void FormatMessage(LPCSTR format, LONG insert);

    /// Replaces the text by string `id` of the first module that has it: the current resource
    /// handle of the calling thread, then the extension libraries, the last loaded first. Nonzero
    /// when found; otherwise 0 and the text stays.
    TARNEL_PLATFORM_API BOOL LoadString(UINT id);

    /// The same from `module` alone.
    TARNEL_PLATFORM_API BOOL LoadString(HINSTANCE module, UINT id);

    friend bool operator==(const CString& left, const CString& right) {
        return left == right.GetString();
    }

    friend bool operator==(const CString& left, LPCSTR right) {
        return std::strcmp(left.GetString(), right ? right : "") == 0;
    }

    friend bool operator<(const CString& left, const CString& right) {
        return std::strcmp(left.GetString(), right.GetString()) < 0;
    }

  private:
    std::string text_;
};
