#pragma once

#include "core/export.h"
#include "platform/base/collections.h"
#include "platform/base/string.h"

// The line settings to choose from, each with the text that a person reads and the registry keeps.

class CComboBox;

/// One selectable setting.
class TARNEL_API CComCfgItem : public CObject {
  public:
    /// Loads the text by `string_id`, from the current resource handle first.
    CComCfgItem(UINT string_id, int value);
    ~CComCfgItem() override;

    UINT m_nStringId;
    CString m_strText;
    int m_nValue; ///< the code of the setting; of a baud rate, bits per second
};

/// A list of settings in the order in which they are shown. It owns its items.
class TARNEL_API CComConfSection : public CTypedPtrArray<CPtrArray, CComCfgItem*> {
  public:
    ~CComConfSection() override;

    /// Appends the list's items.
    virtual void LoadItems() = 0;

    /// The text of the first item of that value, or "NOT FOUND".
    CString FindText(int value) const;

    /// The value of the first item of exactly that text, or -1.
    int FindValue(const CString& text) const;

    /// Appends all texts to `box`.
    void FillComboBox(CComboBox& box) const;
};

class TARNEL_API CComBaudRates : public CComConfSection {
  public:
    void LoadItems() override;
};

class TARNEL_API CComParities : public CComConfSection {
  public:
    void LoadItems() override;
};

class TARNEL_API CComStopBits : public CComConfSection {
  public:
    void LoadItems() override;
};

/// The lists that all serial configurations of the process share. They live from the first Acquire
/// to the last Release, in between they never change. The texts are those of the library itself,
/// whatever the user's language, because the registry keeps them. Acquire and Release belong to one
/// thread, the application's; the lists may be read by any.
class TARNEL_API VariousMap : public CObject {
  public:
    /// The lists, with one more user.
    static VariousMap* Acquire();

    /// One user less. The last one deletes the lists.
    void Release();

    CComBaudRates m_baudRates;
    CComParities m_parities;
    CComStopBits m_stopBits;

  private:
    VariousMap();
    ~VariousMap() override;

    static VariousMap* instance_;

    int use_count_ = 0;
};
