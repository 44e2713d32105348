#include "desktop/HotKeys.h"

#include "platform/base/window_styles.h"
#include "platform/desktop/hot_key.h"

#include <algorithm>

namespace {

/// Where the identifiers begin with which shared libraries register.
constexpr int first_id = 0xC100;

bool is_inactive(const CHotKey& hot_key) {
    return hot_key == tarnel::empty_hot_key() || !hot_key.Enabled();
}

} // namespace

class CHotKeys::CMsgWnd final : public CWnd {
  public:
    CHotKeys* m_pOwner = nullptr;

  protected:
    LRESULT OnHotKeyMessage(WPARAM, LPARAM keys) {
        m_pOwner->DoHotKey(HIWORD(keys), LOWORD(keys));
        return 1;
    }

    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(CHotKeys::CMsgWnd, CWnd)
ON_MESSAGE(WM_HOTKEY, OnHotKeyMessage)
END_MESSAGE_MAP()

CHotKeys::CHotKeys() = default;

CHotKeys::CHotKeys(const CHotKeys& other) : m_hotKeys(other.m_hotKeys) {}

CHotKeys& CHotKeys::operator=(const CHotKeys& other) {
    Destroy();
    if (this != &other) {
        m_hotKeys = other.m_hotKeys;
    }
    return *this;
}

CHotKeys::~CHotKeys() {
    Destroy();
}

HWND CHotKeys::window() const {
    return m_pMsgWnd ? m_pMsgWnd->GetSafeHwnd() : nullptr;
}

int CHotKeys::Create() {
    if (m_bCreated) {
        return 1;
    }
    m_pModuleState = AfxGetModuleState();
    m_pMsgWnd = std::make_unique<CMsgWnd>();
    m_pMsgWnd->m_pOwner = this;
    m_bCreated = m_pMsgWnd->CreateEx(0, AfxRegisterWndClass(0), "HotKey Window",
                                     WS_POPUP | WS_DISABLED, RECT{}, nullptr, 0);
    if (!m_bCreated) {
        m_pMsgWnd.reset();
        m_pModuleState = nullptr;
    }
    return m_bCreated;
}

void CHotKeys::Destroy() {
    if (!m_bCreated) {
        return;
    }
    const AFX_MAINTAIN_STATE2 as_at_creation(m_pModuleState);
    Unregister();
    m_pMsgWnd->DestroyWindow();
    m_pMsgWnd.reset();
    m_pModuleState = nullptr;
    m_bCreated = 0;
}

// The list.

int CHotKeys::Add(const CHotKey& hot_key) {
    m_hotKeys.push_back(hot_key);
    return 1;
}

int CHotKeys::Remove(CHotKey& hot_key) {
    const CHotKey removed = hot_key; // which may be one of the list
    std::erase_if(m_hotKeys, [&](const CHotKey& listed) { return listed == removed; });
    return 1;
}

void CHotKeys::Clear() {
    Unregister();
    m_hotKeys.clear();
}

CHotKey CHotKeys::HotKey(int index) {
    return m_hotKeys.at(static_cast<std::size_t>(index));
}

// Registration.

int CHotKeys::Register(const CHotKey& hot_key) {
    return is_inactive(hot_key) ? 1
                                : RegisterHotKey(window(), hot_key.Id() + first_id,
                                                 hot_key.Modifiers(), hot_key.VirtualKeyCode());
}

int CHotKeys::Unregister(const CHotKey& hot_key) {
    return is_inactive(hot_key) ? 1 : UnregisterHotKey(window(), hot_key.Id() + first_id);
}

int CHotKeys::Register() {
    if (m_bRegistered) {
        return 1;
    }
    if (!m_pMsgWnd && !Create()) {
        return 0;
    }
    for (const CHotKey& hot_key : m_hotKeys) {
        Register(hot_key);
    }
    m_bRegistered = 1;
    return 1;
}

int CHotKeys::Unregister() {
    if (m_bRegistered) {
        for (const CHotKey& hot_key : m_hotKeys) {
            Unregister(hot_key);
        }
        m_bRegistered = 0;
    }
    return 1;
}

void CHotKeys::DoHotKey(UINT virtual_key_code, UINT modifiers) {
    const auto pressed = std::ranges::find_if(m_hotKeys, [&](const CHotKey& hot_key) {
        return hot_key.VirtualKeyCode() == virtual_key_code && hot_key.Modifiers() == modifiers;
    });
    if (pressed != m_hotKeys.end()) {
        OnHotKey(*pressed);
    }
}

void CHotKeys::OnHotKey(CHotKey) {}
