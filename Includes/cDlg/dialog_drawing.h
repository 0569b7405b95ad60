// Helpers for what dialogs draw themselves.
#pragma once

#include <cstdint>

#include "Includes/cDlg/window_types.h"
#include "crypto/base/export.h"

namespace toolbelt {

// Hides the control, which only marks a place, and draws the icon in its own size with the top left corner there. A
// control that does not exist is reported as the assertion "hWnd != NULL".
TB_API void PaintIcon(WindowHandle dialog, DeviceHandle device, std::int32_t placeholderId, IconHandle icon) noexcept;

// The rectangle that the text needs in the font of the system's message boxes: right and bottom are set from left and
// top. flags are those of the system's DrawText: with DT_WORDBREAK (0x10) lines are broken at the rectangle's right
// edge; DT_MODIFYSTRING counts for nothing, since the text is never changed. False, and the rectangle as it was, when
// the font (reported as the assertion "false" or "hFont != NULL") or the screen cannot be had, or the system measures
// nothing.
TB_API bool MeasureText(const wchar_t* text, std::uint32_t flags, Rectangle& rectangle) noexcept;

} // namespace toolbelt
