#include "platform/companions/registry_bag.h"

#include "platform/base/utf16.h"

#include <atomic>
#include <cstring>

namespace tarnel {
namespace {

class RegistryBag final : public IPropertyBag {
  public:
    explicit RegistryBag(HKEY key) : key_(key) {}

    RegistryBag(const RegistryBag&) = delete;
    RegistryBag& operator=(const RegistryBag&) = delete;

    HRESULT QueryInterface(const GUID& id, void** object) override {
        if (!object) {
            return E_POINTER;
        }
        const bool known = id == IID_IUnknown || id == IID_IPropertyBag;
        *object = known ? static_cast<IPropertyBag*>(this) : nullptr;
        return known ? (AddRef(), S_OK) : E_NOINTERFACE;
    }

    ULONG AddRef() override { return ++holders_; }

    ULONG Release() override {
        const ULONG left = --holders_;
        if (left == 0) {
            delete this;
        }
        return left;
    }

    HRESULT Read(LPCOLESTR name, VARIANT* value, IErrorLog* errors) override;
    HRESULT Write(LPCOLESTR name, VARIANT* value) override;

  private:
    ~RegistryBag() { RegCloseKey(key_); }

    const HKEY key_;
    std::atomic<ULONG> holders_ = 1;
};

HRESULT RegistryBag::Read(LPCOLESTR name, VARIANT* value, IErrorLog*) {
    if (!name || !value) {
        return E_POINTER;
    }
    DWORD type = 0;
    BYTE data[sizeof(LONG)];
    DWORD size = sizeof(data);
    const LONG error = RegQueryValueExA(key_, utf8_of(name).c_str(), nullptr, &type, data, &size);
    if (error == ERROR_FILE_NOT_FOUND) {
        return E_INVALIDARG;
    }
    const bool other_kind = value->vt != VT_EMPTY && value->vt != VT_I4;
    if (error || type != REG_DWORD || size != sizeof(data) || other_kind) {
        return E_FAIL;
    }
    value->vt = VT_I4;
    std::memcpy(&value->lVal, data, sizeof(data));
    return S_OK;
}

HRESULT RegistryBag::Write(LPCOLESTR name, VARIANT* value) {
    if (!name || !value) {
        return E_POINTER;
    }
    if (value->vt != VT_I4) {
        return E_INVALIDARG;
    }
    BYTE data[sizeof(LONG)];
    std::memcpy(data, &value->lVal, sizeof(data));
    return RegSetValueExA(key_, utf8_of(name).c_str(), 0, REG_DWORD, data, sizeof(data)) ? E_FAIL
                                                                                         : S_OK;
}

} // namespace

IPropertyBag* make_registry_bag(HKEY key) {
    return new RegistryBag(key);
}

} // namespace tarnel
