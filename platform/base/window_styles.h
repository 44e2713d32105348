#pragma once

#include "platform/base/types.h"

// Styles of windows, dialogs and controls, and the identifiers of the usual buttons: what resource
// scripts name and windows obey. Styles that have no effect here are there for the scripts.

constexpr DWORD WS_POPUP = 0x80000000;
constexpr DWORD WS_CHILD = 0x40000000;
constexpr DWORD WS_VISIBLE = 0x10000000;
constexpr DWORD WS_DISABLED = 0x08000000;
constexpr DWORD WS_CAPTION = 0x00C00000;
constexpr DWORD WS_BORDER = 0x00800000;
constexpr DWORD WS_DLGFRAME = 0x00400000;
constexpr DWORD WS_VSCROLL = 0x00200000;
constexpr DWORD WS_SYSMENU = 0x00080000;
constexpr DWORD WS_GROUP = 0x00020000;
constexpr DWORD WS_TABSTOP = 0x00010000;

constexpr DWORD WS_EX_NOPARENTNOTIFY = 0x4;
constexpr DWORD WS_EX_CONTEXTHELP = 0x400;

constexpr DWORD DS_ABSALIGN = 0x1;
constexpr DWORD DS_FIXEDSYS = 0x8;
constexpr DWORD DS_NOFAILCREATE = 0x10;
constexpr DWORD DS_SETFONT = 0x40;
constexpr DWORD DS_MODALFRAME = 0x80;
constexpr DWORD DS_CONTROL = 0x400;
constexpr DWORD DS_CENTER = 0x800;
constexpr DWORD DS_CONTEXTHELP = 0x2000;
constexpr DWORD DS_SHELLFONT = DS_SETFONT | DS_FIXEDSYS;

constexpr DWORD BS_PUSHBUTTON = 0;
constexpr DWORD BS_DEFPUSHBUTTON = 1;
constexpr DWORD BS_CHECKBOX = 2;
constexpr DWORD BS_AUTOCHECKBOX = 3;
constexpr DWORD BS_GROUPBOX = 7;
constexpr DWORD BS_TYPEMASK = 0xF;

constexpr DWORD ES_AUTOHSCROLL = 0x80;

constexpr DWORD SS_LEFT = 0;

constexpr DWORD CBS_DROPDOWN = 2;
constexpr DWORD CBS_DROPDOWNLIST = 3;
constexpr DWORD CBS_SORT = 0x100;
constexpr DWORD CBS_HASSTRINGS = 0x200;

constexpr DWORD UDS_WRAP = 0x1;
constexpr DWORD UDS_SETBUDDYINT = 0x2;
constexpr DWORD UDS_ALIGNRIGHT = 0x4;
constexpr DWORD UDS_ALIGNLEFT = 0x8;
constexpr DWORD UDS_AUTOBUDDY = 0x10;
constexpr DWORD UDS_ARROWKEYS = 0x20;
constexpr DWORD UDS_HORZ = 0x40;
constexpr DWORD UDS_NOTHOUSANDS = 0x80;

constexpr int IDOK = 1;
constexpr int IDCANCEL = 2;
constexpr int IDABORT = 3;
constexpr int IDRETRY = 4;
constexpr int IDIGNORE = 5;
constexpr int IDYES = 6;
constexpr int IDNO = 7;
constexpr int IDC_STATIC = -1; // of what nobody asks for
