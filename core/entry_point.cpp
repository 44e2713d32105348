#include "core/entry_point.h"

#include "core/built_in_script.h"
#include "core/load_order.h"
#include "core/locale_manager.h"
#include "platform/base/diagnostics.h"
#include "platform/modules/extension_module.h"
#include "platform/modules/module.h"

namespace {

AFX_EXTENSION_MODULE extension_module;

void attach(HINSTANCE instance) {
    OutputDebugStringA("TarnelToolboxLib.DLL Initializing!\n");
    AfxInitExtensionModule(extension_module, instance);
    new CDynLinkLibrary(extension_module); // owned by the framework's chain
    tarnel::locale_manager.attach(extension_module.hModule);
}

void detach() {
    OutputDebugStringA("TarnelToolboxLib.DLL Terminating!\n");
    tarnel::locale_manager.detach();
    AfxTermExtensionModule(extension_module, FALSE);
}

BOOL DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        attach(instance);
    } else if (reason == DLL_PROCESS_DETACH) {
        detach();
    }
    return TRUE;
}

tarnel::ModuleEntry module_entry TARNEL_LOAD_PLACE(load_entry_point)(&DllMain, "TarnelToolBoxLib",
                                                                     tarnel::built_in_script());

} // namespace

HINSTANCE tarnel::library_module() {
    return extension_module.hModule;
}
