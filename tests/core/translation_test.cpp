#include "core/entry_point.h"
#include "core/resource_manager.h"
#include "core/resource_scope.h"
#include "platform/base/string.h"
#include "platform/modules/dialog_template.h"
#include "tests/support/environment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string>

// The languages that ship, found where the build puts them and an installation has them.

namespace {

using tarnel::ControlTemplate;
using tarnel::DialogTemplate;

class Translation : public testing::TestWithParam<const char*> {
  protected:
    Translation() {
        environment_.speak(GetParam());
        module_ = tarnel::resource_manager->get_resource_handle();
    }

    std::string text(UINT id) const {
        CString found;
        found.LoadString(module_, id);
        return found.GetString();
    }

    support::Environment environment_;
    HINSTANCE module_;
};

std::shared_ptr<const DialogTemplate> built_in(UINT id) {
    AfxSetResourceHandle(tarnel::library_module());
    const auto dialog = tarnel::find_dialog(id);
    AfxSetResourceHandle(nullptr);
    return dialog;
}

/// What code relies on, and no translation may change.
std::string skeleton(const DialogTemplate& dialog) {
    std::string text = std::to_string(dialog.style) + ' ' + dialog.font + '\n';
    for (const ControlTemplate& control : dialog.controls) {
        text += std::to_string(control.id) + ' ' + control.class_name + ' ' +
                std::to_string(control.style) + '\n';
    }
    return text;
}

std::string mnemonics(const DialogTemplate& dialog) {
    std::string found;
    for (const ControlTemplate& control : dialog.controls) {
        const std::size_t mark = control.text.find('&');
        if (mark != std::string::npos) {
            found += static_cast<char>(std::tolower(control.text.at(mark + 1)));
        }
    }
    return found;
}

/// In pixels of the dialogs' font, a little more than its average character takes.
double estimated_width(const std::string& text) {
    return 5.0 * static_cast<double>(std::count_if(text.begin(), text.end(), [](char c) {
               return c != '&' && (static_cast<unsigned char>(c) & 0xC0) != 0x80;
           }));
}

TEST_P(Translation, HasAllTextsButTheSerialSettings) {
    ASSERT_NE(module_, tarnel::library_module());
    std::set<std::string> names;
    for (UINT id = 0; id <= 0xFFFF; ++id) {
        const bool is_name = id >= 12547 && id <= 12590;
        EXPECT_EQ(!text(id).empty(), is_name || id == 12513 || id == 61712) << id;
        if (is_name) {
            names.insert(text(id));
        }
    }
    EXPECT_EQ(names.size(), 44U) << "names are also translated back";
    EXPECT_NE(text(12513).find("%1!d!"), std::string::npos);
}

TEST_P(Translation, HasAllDialogsAsTheyAreBuiltInAndWithRoom) {
    for (const UINT id : {12500, 12501, 12502, 12503}) {
        const CLocaleResourceScope scope;
        const auto dialog = tarnel::find_dialog(id);
        ASSERT_TRUE(dialog);
        ASSERT_NE(dialog, built_in(id)) << id << " is not translated";
        EXPECT_EQ(skeleton(*dialog), skeleton(*built_in(id))) << id;
        std::string keys = mnemonics(*dialog);
        std::sort(keys.begin(), keys.end());
        EXPECT_EQ(std::adjacent_find(keys.begin(), keys.end()), keys.end()) << id << ' ' << keys;
        for (const ControlTemplate& control : dialog->controls) {
            const bool list = control.class_name == "ComboBox"; // its height is that of the list
            EXPECT_LE(control.x + control.width, dialog->width) << control.text;
            EXPECT_LE(control.y + (list ? 14 : control.height), dialog->height) << control.text;
            if (control.class_name == "Button" || control.class_name == "Static") {
                const int lines = std::max(1, control.height / 8);
                const double room = 1.5 * control.width * lines;
                EXPECT_LE(estimated_width(control.text), room) << control.text;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Shipped, Translation, testing::Values("de", "fr"));

} // namespace
