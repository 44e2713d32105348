#include "desktop/EncoderDialog.h"
#include "serial/SettingsDialog.h"

// A plug-in that uses the library's dialogs. A test loads it at run time, and the library with it.

extern "C" __attribute__((visibility("default"))) bool use_dialogs() {
    CComDeviceConfiguration configuration;
    configuration.Edit(0);
    CEncoderInitDlg encoders;
    if (!encoders.Create(nullptr)) {
        return false;
    }
    encoders.set_home_init(1);
    const bool done = encoders.GetAllDone() != 0;
    return encoders.DestroyWindow() && done;
}
