// Message boxes for errors, without a link to the windowing library: "user32.dll" is bound when the first box is shown.
// Where there is none, or no screen that anybody could see, the text goes to the debug channel instead.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"

namespace toolbelt {

inline constexpr std::uint32_t MESSAGE_ICON_STOP = 0x10;
inline constexpr std::uint32_t MESSAGE_SYSTEM_MODAL = 0x1000;
inline constexpr std::uint32_t MESSAGE_TOPMOST = 0x40000;
inline constexpr std::uint32_t MESSAGE_RIGHT_TO_LEFT = 0x180000; // right alignment and right-to-left reading

// Shows a box and returns the button that closed it; 0 when nothing was shown. Null texts are empty.
std::int32_t showMessage(void* window, const wchar_t* text, const wchar_t* title, std::uint32_t flags) noexcept;

// As "MessageBoxA": texts in the ANSI code page.
using MessageBoxFunction = int(__stdcall*)(void* window, const char* text, const char* title, unsigned int flags);
// Puts another function in the place of "MessageBoxA", for example one that writes to a log; null, as from the start,
// stands for the system's. Returns what was set before.
TB_API MessageBoxFunction setMessageBoxFunction(MessageBoxFunction function) noexcept;

} // namespace toolbelt
