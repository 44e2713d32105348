#include "desktop/EncoderDialog.h"
#include "platform/windows/dialog_picture.h"
#include "protocols/ProbeDialog.h"
#include "serial/SettingsDialog.h"
#include "tests/support/environment.h"
#include "tests/support/scripted_presenter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

// Each dialog in each language, as it is drawn: what a person sees of its texts and controls.

namespace {

using tarnel::ControlView;
using tarnel::DialogView;

/// The dialog as it is when it has just been opened.
DialogView opened(const std::function<void()>& open) {
    support::ScriptedPresenter screen;
    DialogView seen;
    screen.next_dialog([&seen](const DialogView& view) {
        seen = view;
        tarnel::user_closes(view.window);
    });
    open();
    return seen;
}

void edit_line(UINT template_id) {
    CComDeviceConfiguration line;
    CComSettingDlg(line, 0, template_id, nullptr).DoModal();
}

void show_encoders(int user_controlled) {
    CEncoderInitDlg dialog;
    dialog.SetEncoderCount(CEncoderInitDlg::max_encoders);
    dialog.SetUserControlled(user_controlled);
    dialog.set_show_set_home(1);
    dialog.Create(nullptr);
    support::dispatch_until([&] { return dialog.GetCancelled() != 0; });
    dialog.DestroyWindow();
}

void choose_probe() {
    tbxProbeSelectionDlg(nullptr).DoModal();
}

bool overlap(const RECT& a, const RECT& b) {
    return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

/// A group stands around its controls, and the arrows at their edit box; an encoder's name is there
/// as a label and, above it, as a button.
bool may_overlap(const ControlView& a, const ControlView& b) {
    const auto is_frame = [](const ControlView& c) {
        return c.class_name == "Button" && (c.style & 0xF) == 7;
    };
    const bool is_name = a.id >= 1011 && a.id <= 1018 && b.id == a.id + 10;
    return is_frame(a) || is_frame(b) || a.buddy == b.window || b.buddy == a.window || is_name;
}

void expect_tidy(const DialogView& dialog) {
    ASSERT_FALSE(dialog.controls.empty());
    const auto& controls = dialog.controls;
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const RECT& r = controls[i].rectangle;
        const bool inside =
            r.left >= 0 && r.top >= 0 && r.right <= dialog.width && r.bottom <= dialog.height;
        EXPECT_TRUE(!controls[i].visible || inside) << controls[i].id << ' ' << controls[i].text;
        for (std::size_t j = i + 1; j < controls.size(); ++j) {
            const bool both = controls[i].visible && controls[j].visible;
            EXPECT_FALSE(both && overlap(r, controls[j].rectangle) &&
                         !may_overlap(controls[i], controls[j]))
                << controls[i].id << " and " << controls[j].id;
        }
    }
    const auto clipped = tarnel::clipped_controls(dialog);
    ASSERT_TRUE(clipped) << "nobody measures";
    for (const HWND window : *clipped) {
        const auto control = std::ranges::find(controls, window, &ControlView::window);
        ADD_FAILURE() << "does not fit: " << control->text;
    }
}

TEST(DialogTexts, FitAndLeaveRoomInEveryLanguage) {
    for (const char* language : {"en", "de", "fr"}) {
        SCOPED_TRACE(language);
        support::Environment environment;
        environment.speak(language);
        expect_tidy(opened([] { edit_line(CComSettingDlg::usual_template); }));
        expect_tidy(opened([] { edit_line(CComSettingDlg::alternative_template); }));
        expect_tidy(opened([] { show_encoders(0); }));
        expect_tidy(opened([] { show_encoders(1); }));
        const CLocaleResourceScope users_language;
        expect_tidy(opened(&choose_probe));
    }
}

} // namespace
