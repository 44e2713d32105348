#pragma once

#include "platform/windows/window_state.h"

#include <string>
#include <string_view>
#include <vector>

namespace tarnel {

/// A drop-down list; its text is that of the selected entry. Dropped or not, its rectangle is that
/// of the closed list, whatever height it is made with.
class ComboBoxWindow final : public Window {
  public:
    explicit ComboBoxWindow(const NewWindow& what);

    /// Chooses an entry as a person does; a position where there is none changes nothing. The list
    /// may be gone afterwards.
    void choose(int position);

    LRESULT handle_message(UINT message, WPARAM wparam, LPARAM lparam) override;
    void describe(ControlView& view) const override;

  private:
    /// One of the list's own messages.
    struct Message {
        UINT number;
        int (*run)(ComboBoxWindow& list, int position, LPARAM text);
    };

    static const Message messages[12];

    using Matches = bool (*)(std::string_view entry, std::string_view wanted);

    int count() const { return static_cast<int>(entries_.size()); }

    bool has(int position) const { return position >= 0 && position < count(); }

    bool handle_key(UINT key);
    int add(std::string text);
    int insert(int position, std::string text);
    int remove(int position);
    int clear();
    int find(int after, std::string_view wanted, Matches matches) const;
    int find_and_select(int after, std::string_view wanted);
    int select(int position);
    int length_of(int position) const;
    int copy(int position, char* buffer) const;

    std::vector<std::string> entries_;
    int selection_ = -1;
};

} // namespace tarnel
