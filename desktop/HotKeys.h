#pragma once

#include "core/export.h"
#include "desktop/HotKey.h"
#include "platform/companions/property_bag.h"
#include "platform/modules/module_state.h"
#include "platform/windows/wnd.h"

#include <memory>
#include <vector>

/// The hot keys of an application, in the order in which they were added. Those that are enabled
/// are registered together, through a hidden window of the thread that registers first; that thread
/// runs a message loop, and is told there by OnHotKey. All calls are made on it.
///
/// What is added or removed while the collection is registered takes effect with the next
/// Register().
class TARNEL_API CHotKeys {
  public:
    CHotKeys();

    /// A copy has the same hot keys, and is not registered.
    CHotKeys(const CHotKeys& other);

    /// Unregisters what was there before.
    CHotKeys& operator=(const CHotKeys& other);

    virtual ~CHotKeys();

    /// Always 1; the same may be there already.
    int Add(const CHotKey& hot_key);

    /// Removes all that equal `hot_key`, whatever their id. Always 1.
    int Remove(CHotKey& hot_key);

    /// Unregisters and removes all.
    void Clear();

    int Count() const { return static_cast<int>(m_hotKeys.size()); }

    /// Throws std::out_of_range for what is not there.
    CHotKey HotKey(int index);

    /// Registers all that are enabled; 0 only when the hidden window cannot be made. What somebody
    /// else has taken is left out.
    int Register();

    /// Always 1.
    int Unregister();

    /// Exchanges the hot keys for those in `bag`, unless it has none; registered again if they were
    /// before. A value that is missing is that of the hot key before it. Always 0. The bag's errors
    /// go to `error_log`, which may be null.
    LONG Load(IPropertyBag* bag, IErrorLog* error_log);

    /// 0, or the bag's first error code (negative). Both flags are ignored.
    LONG Save(IPropertyBag* bag, int clear_dirty, int save_all_properties);

  protected:
    /// Makes the hidden window, and takes it away.
    int Create();
    void Destroy();

    /// One hot key; 1 and nothing else for an empty or disabled one.
    int Register(const CHotKey& hot_key);
    int Unregister(const CHotKey& hot_key);

    void DoHotKey(UINT virtual_key_code, UINT modifiers);

    LONG LoadHotKey(int index, CHotKey& hot_key, IPropertyBag* bag, IErrorLog* error_log);
    LONG SaveHotKey(int index, const CHotKey& hot_key, IPropertyBag* bag);

    /// The combination was pressed, whichever program has the keyboard.
    virtual void OnHotKey(CHotKey hot_key);

  private:
    class CMsgWnd;

    HWND window() const;

    std::vector<CHotKey> m_hotKeys;
    std::unique_ptr<CMsgWnd> m_pMsgWnd;
    AFX_MODULE_STATE* m_pModuleState = nullptr; ///< the one that the window was made under
    int m_bCreated = 0;
    int m_bRegistered = 0;
};
