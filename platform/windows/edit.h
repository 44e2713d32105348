#pragma once

#include "platform/windows/window_state.h"

#include <string_view>

namespace tarnel {

/// A box of one line of text. Texts are cut at 30,000 bytes. The selection counts in bytes and
/// never parts a character.
class Edit final : public Window {
  public:
    explicit Edit(const NewWindow& what);

    /// Changes the text as a person does, with the cursor behind it. The box may be gone
    /// afterwards.
    void type(std::string_view text);

    LRESULT handle_message(UINT message, WPARAM wparam, LPARAM lparam) override;
    void describe(ControlView& view) const override;

  private:
    void change_text(std::string text, std::size_t cursor);
    void select(int from, int to);
    bool step_arrows(UINT key);

    std::size_t selection_start_ = 0;
    std::size_t selection_end_ = 0;
};

} // namespace tarnel
