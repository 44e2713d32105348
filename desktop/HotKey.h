#pragma once

#include "core/export.h"
#include "platform/base/string.h"
#include "platform/base/types.h"

/// A key combination, and what its owner calls it.
class TARNEL_API CHotKey {
  public:
    /// No key, but enabled: not the empty hot key.
    constexpr CHotKey() = default;

    constexpr CHotKey(WORD virtual_key_code, WORD modifiers, int id, int enabled)
        : m_wVirtualKeyCode(virtual_key_code), m_wModifiers(modifiers), m_nId(id),
          m_bEnabled(enabled) {}

    /// 1 when key, modifiers and the enabled flag are equal; the id takes no part.
    int operator==(const CHotKey& other) const;

    int operator!=(const CHotKey& other) const { return !(*this == other); }

    WORD VirtualKeyCode() const { return m_wVirtualKeyCode; }

    void VirtualKeyCode(WORD code) { m_wVirtualKeyCode = code; }

    /// MOD_CONTROL and the like.
    WORD Modifiers() const { return m_wModifiers; }

    void Modifiers(WORD modifiers) { m_wModifiers = modifiers; }

    int Id() const { return m_nId; }

    void Id(int id) { m_nId = id; }

    /// Nonzero: registered with its collection.
    int Enabled() const { return m_bEnabled; }

    void Enabled(int enabled) { m_bEnabled = enabled; }

    /// As a person reads it: "CTRL + SHIFT + F1"; "None" for the empty hot key.
    CString ToString() const;

  protected:
    CString KeyCodeToString() const;
    CString ModifiersToString() const;

  private:
    WORD m_wVirtualKeyCode = 0;
    WORD m_wModifiers = 0;
    int m_nId = 0;
    int m_bEnabled = 1;
};

namespace tarnel {

/// No key, and not enabled.
inline const CHotKey& empty_hot_key() {
    static constinit const CHotKey empty(0, 0, 0, 0);
    return empty;
}

} // namespace tarnel

enum ETranslate { TRANSLATE_MOD_TO_HOTKEYF = 0, TRANSLATE_HOTKEYF_TO_MOD = 1 };

/// Translates modifiers of the system (MOD_) to those of a control for hot keys (HOTKEYF_), or the
/// other way; what the other side does not know is dropped.
TARNEL_API WORD TranslateModifier(WORD modifiers, ETranslate direction);
