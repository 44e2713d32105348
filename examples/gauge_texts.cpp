// An application with texts and a dialog of its own: English built in, German in a script beside
// it, ../share/gauge_texts/de/gauge_texts.rc. Try LANG=de_DE.UTF-8; with --ask
// the dialog opens.

#include "platform/companions/locale_manager_base.h"
#include "platform/modules/extension_module.h"
#include "platform/modules/module.h"
#include "platform/modules/module_state.h"
#include "platform/windows/dialog.h"

#include <cstdio>
#include <cstring>
#include <utility>

namespace {

constexpr const char* english = R"(
STRINGTABLE BEGIN 1 "%1!d! points measured." 2 "Kept." 3 "Dropped." END
10 DIALOG 0, 0, 140, 50
STYLE WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_SHELLFONT
CAPTION "Measurement"
BEGIN
    LTEXT "Keep the points?", -1, 7, 7, 126, 10
    DEFPUSHBUTTON "&Keep", IDOK, 7, 30, 60, 14
    PUSHBUTTON "&Drop", IDCANCEL, 73, 30, 60, 14
END
)";

/// Has the user's language current in the application, if there is a script for it.
class Languages final : public lmLocaleManagerBase {
  public:
    void reload_resource_module() override {
        std::string path;
        const bool found = find_resource_dll(attached_module(), "", path);
        HINSTANCE const before =
            std::exchange(script_, found ? lm_load_library(path.c_str()) : nullptr);
        AfxSetResourceHandle(script_ ? script_ : attached_module());
        if (before) {
            FreeLibrary(before);
        }
    }

  private:
    HINSTANCE script_ = nullptr;
};

Languages languages;

BOOL entry(HINSTANCE module, DWORD reason, LPVOID) {
    reason == DLL_PROCESS_ATTACH ? languages.attach(module) : languages.detach();
    return TRUE;
}

const tarnel::ModuleEntry module_entry(&entry, "gauge_texts", english);

CString text(UINT id) {
    CString found;
    found.LoadString(id);
    return found;
}

} // namespace

int main(int argc, char** argv) {
    CString line;
    line.FormatMessage(text(1), 12);
    std::printf("%s\n", line.GetString());
    if (argc > 1 && std::strcmp(argv[1], "--ask") == 0) {
        const bool keep = CDialog(10).DoModal() == IDOK;
        std::printf("%s\n", text(keep ? 2 : 3).GetString());
    }
}
