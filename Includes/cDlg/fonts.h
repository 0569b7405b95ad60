// cFonts: the three bold fonts that the dialogs share.
#pragma once

#include <cstdint>

#include "Includes/cDlg/window_types.h"
#include "crypto/base/export.h"

namespace toolbelt {

inline constexpr std::int32_t POINTS_PER_INCH = 72;

// Handles only: whoever holds a copy owns nothing.
struct cFonts
{
    FontHandle shell10 = nullptr; // "MS Shell Dlg", 10 points
    FontHandle arial12 = nullptr; // "ARIAL", 12 points
    FontHandle shell8 = nullptr;  // "MS Shell Dlg", 8 points
};

// The process-wide fonts, created on first use for the screen's resolution, read-only from then on and destroyed when
// the process ends. A font that could not be had is null and tried again by the next call.
TB_API cFonts sharedFonts() noexcept;

// The vertical pixels per inch of the screen.
TB_API std::int32_t screenDpi() noexcept;

} // namespace toolbelt
