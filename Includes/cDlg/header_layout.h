// Where icon, title and text stand in a dialog's header band: the library's own, for cColoredDlg. Arithmetic alone, so
// that it can be looked at for every width and resolution.
#pragma once

#include <cstdint>

namespace toolbelt {

inline constexpr std::int32_t LAYOUT_BASE_DPI = 96;

struct LayoutBox
{
    std::int32_t left, top, width, height;
};

struct HeaderLayout
{
    LayoutBox icon;  // empty without one
    LayoutBox title; // one line of the 12-point font
    LayoutBox text;  // as many lines as fit, one at least
};

// The band is width x height pixels on a screen of dpi pixels per inch. Title and text start behind the icon, an
// iconSize pixels wide square (0: none), reach to the right margin and stand together in the middle of the band's
// height. What a narrow or low band cannot hold is cut at its edge; nothing ever leaves the band.
HeaderLayout layoutHeader(std::int32_t width, std::int32_t height, std::int32_t dpi, std::int32_t iconSize,
                          bool largeText) noexcept;

} // namespace toolbelt
