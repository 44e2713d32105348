#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

constexpr UINT MB_OK = 0;
constexpr UINT MB_OKCANCEL = 1;
constexpr UINT MB_ABORTRETRYIGNORE = 2;
constexpr UINT MB_YESNOCANCEL = 3;
constexpr UINT MB_YESNO = 4;
constexpr UINT MB_RETRYCANCEL = 5;
constexpr UINT MB_TYPEMASK = 0xF;
constexpr UINT MB_ICONERROR = 0x10;
constexpr UINT MB_ICONQUESTION = 0x20;
constexpr UINT MB_ICONEXCLAMATION = 0x30;
constexpr UINT MB_ICONINFORMATION = 0x40;
constexpr UINT MB_ICONMASK = 0xF0;

/// Shows `text` until the person answers, dispatching all messages of the thread meanwhile; `owner`
/// is disabled as long. A null owner: the modal dialog that runs in the thread, if there is one.
/// The button's identifier; 0 when nobody can show it, and then the text is reported.
TARNEL_PLATFORM_API int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type);

/// The same with the application's name as caption, and the exclamation icon unless `type` names
/// another.
TARNEL_PLATFORM_API int AfxMessageBox(LPCSTR text, UINT type = MB_OK, UINT help = 0);
