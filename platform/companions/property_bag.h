#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

#include <cstdint>

// Property bags: named values that an application hands to those who keep settings in them. Names
// are UTF-16.

using HRESULT = LONG; // negative for a failure
using ULONG = std::uint32_t;
using VARTYPE = WORD;
using LPCOLESTR = const char16_t*;

#define OLESTR(text) u##text

constexpr HRESULT S_OK = 0;
constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003);
constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);

constexpr VARTYPE VT_EMPTY = 0;
constexpr VARTYPE VT_I4 = 3;

/// A value with its kind; of the kinds, the layer knows the 32-bit number.
struct VARIANT {
    VARTYPE vt = VT_EMPTY;
    WORD wReserved1 = 0;
    WORD wReserved2 = 0;
    WORD wReserved3 = 0;

    union {
        LONG lVal = 0;     ///< VT_I4
        void* pointers[2]; ///< the room of the other kinds
    };
};

static_assert(sizeof(VARIANT) == 24);

/// The name of an interface.
struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];

    friend bool operator==(const GUID&, const GUID&) = default;
};

constexpr GUID IID_IUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr GUID IID_IPropertyBag = {
    0x55272A00, 0x42CB, 0x11CE, {0x81, 0x35, 0, 0xAA, 0, 0x4B, 0xB8, 0x51}};

/// An object that counts those who hold it.
class IUnknown {
  public:
    /// The object as `id` knows it, held once more; E_NOINTERFACE and null when it is no such
    /// thing.
    virtual HRESULT QueryInterface(const GUID& id, void** object) = 0;

    /// Holds it once more; how often it is held then.
    virtual ULONG AddRef() = 0;

    /// Lets go of it; the last one deletes it.
    virtual ULONG Release() = 0;

  protected:
    ~IUnknown() = default;
};

/// Somebody who collects what went wrong; handed through to bags.
class IErrorLog;

class IPropertyBag : public IUnknown {
  public:
    /// Gives the value `name`, in the kind that `value->vt` asks for if it is not VT_EMPTY.
    /// E_INVALIDARG when it is missing. `errors` may be null.
    virtual HRESULT Read(LPCOLESTR name, VARIANT* value, IErrorLog* errors) = 0;

    virtual HRESULT Write(LPCOLESTR name, VARIANT* value) = 0;

  protected:
    ~IPropertyBag() = default;
};

/// The number `name` of `bag`. A negative result is the bag's, or E_FAIL when it gave something
/// else than a number, or E_POINTER without a bag; then `value` stays.
TARNEL_PLATFORM_API HRESULT ReadParameter(IPropertyBag* bag, IErrorLog* errors, LPCOLESTR name,
                                          int& value);

/// Writes the number `name`. A negative result is the bag's, or E_POINTER without a bag.
TARNEL_PLATFORM_API HRESULT SaveParameter(IPropertyBag* bag, LPCOLESTR name, int value);
