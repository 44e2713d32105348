#include "platform/companions/property_bag.h"

HRESULT ReadParameter(IPropertyBag* bag, IErrorLog* errors, LPCOLESTR name, int& value) {
    if (!bag) {
        return E_POINTER;
    }
    VARIANT number;
    number.vt = VT_I4;
    const HRESULT result = bag->Read(name, &number, errors);
    if (result < 0 || number.vt != VT_I4) {
        return result < 0 ? result : E_FAIL;
    }
    value = number.lVal;
    return result;
}

HRESULT SaveParameter(IPropertyBag* bag, LPCOLESTR name, int value) {
    if (!bag) {
        return E_POINTER;
    }
    VARIANT number;
    number.vt = VT_I4;
    number.lVal = value;
    return bag->Write(name, &number);
}
