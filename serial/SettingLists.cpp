#include "serial/SettingLists.h"

#include "core/entry_point.h"
#include "platform/modules/module_state.h"
#include "platform/windows/combo_box.h"

#include <span>

namespace {

struct Setting {
    UINT string_id;
    int value;
};

constexpr Setting baud_rates[] = {{12514, 75},     {12515, 110},   {12516, 150},   {12517, 300},
                                  {12518, 600},    {12519, 1200},  {12520, 1800},  {12521, 2400},
                                  {12522, 4800},   {12523, 7200},  {12524, 9600},  {12526, 14400},
                                  {12527, 19200},  {12528, 38400}, {12529, 56000}, {12525, 115200},
                                  {12530, 128000}, {12531, 256000}};
constexpr Setting parities[] = {{12505, 0}, {12506, 2}, {12507, 1}, {12508, 3}, {12509, 4}};
constexpr Setting stop_bits[] = {{12510, 0}, {12511, 1}, {12512, 2}};

void append(CComConfSection& list, std::span<const Setting> settings) {
    for (const auto [string_id, value] : settings) {
        list.Add(new CComCfgItem(string_id, value));
    }
}

/// Resources come from the library itself while this object lives.
class OwnResources {
  public:
    OwnResources() { AfxSetResourceHandle(tarnel::library_module()); }

    ~OwnResources() { AfxSetResourceHandle(previous_); }

    OwnResources(const OwnResources&) = delete;
    OwnResources& operator=(const OwnResources&) = delete;

  private:
    HINSTANCE previous_ = AfxGetResourceHandle();
};

} // namespace

CComCfgItem::CComCfgItem(UINT string_id, int value) : m_nStringId(string_id), m_nValue(value) {
    m_strText.LoadString(string_id);
}

CComCfgItem::~CComCfgItem() = default;

CComConfSection::~CComConfSection() {
    for (INT_PTR position = 0; position < GetSize(); ++position) {
        delete GetAt(position);
    }
    RemoveAll();
}

CString CComConfSection::FindText(int value) const {
    for (INT_PTR position = 0; position < GetSize(); ++position) {
        if (GetAt(position)->m_nValue == value) {
            return GetAt(position)->m_strText;
        }
    }
    return "NOT FOUND";
}

int CComConfSection::FindValue(const CString& text) const {
    for (INT_PTR position = 0; position < GetSize(); ++position) {
        if (GetAt(position)->m_strText == text) {
            return GetAt(position)->m_nValue;
        }
    }
    return -1;
}

void CComConfSection::FillComboBox(CComboBox& box) const {
    for (INT_PTR position = 0; position < GetSize(); ++position) {
        box.AddString(GetAt(position)->m_strText);
    }
}

void CComBaudRates::LoadItems() {
    append(*this, baud_rates);
}

void CComParities::LoadItems() {
    append(*this, parities);
}

void CComStopBits::LoadItems() {
    append(*this, stop_bits);
}

constinit VariousMap* VariousMap::instance_ = nullptr;

VariousMap::VariousMap() {
    const OwnResources own_resources;
    m_baudRates.LoadItems();
    m_parities.LoadItems();
    m_stopBits.LoadItems();
}

VariousMap::~VariousMap() = default;

VariousMap* VariousMap::Acquire() {
    if (!instance_) {
        instance_ = new VariousMap;
    }
    ++instance_->use_count_;
    return instance_;
}

void VariousMap::Release() {
    if (--use_count_ == 0) {
        instance_ = nullptr;
        delete this;
    }
}
