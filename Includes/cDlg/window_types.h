// The system's types that the dialog classes' interfaces need, so that no header here brings in windows.h. They are the
// same types: a HWND is a WindowHandle, and an override may be written with either name.
#pragma once

#include <cstdint>

struct HDC__;
struct HFONT__;
struct HICON__;
struct HINSTANCE__;
struct HWND__;
struct tagRECT;

namespace toolbelt {

using DeviceHandle = HDC__*;
using FontHandle = HFONT__*;
using IconHandle = HICON__*;
using InstanceHandle = HINSTANCE__*;
using WindowHandle = HWND__*;
using Rectangle = tagRECT;

using WordParameter = unsigned int; // WPARAM
using LongParameter = long;         // LPARAM
using MessageResult = long;         // LRESULT
using Colour = unsigned long;       // COLORREF: red in the low byte, then green, then blue

using WindowProcedure = MessageResult(__stdcall*)(WindowHandle window, unsigned int message, WordParameter word,
                                                  LongParameter parameter);

} // namespace toolbelt
