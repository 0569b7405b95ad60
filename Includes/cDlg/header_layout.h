// Where icon, title and text stand in a dialog's header band. Arithmetic alone, so that it can be looked at for every
// width and resolution.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"

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
TB_API HeaderLayout layoutHeader(std::int32_t width, std::int32_t height, std::int32_t dpi, std::int32_t iconSize,
                                 bool largeText) noexcept;

// The height that suits a title and so many lines of text.
TB_API std::int32_t suitableHeaderHeight(std::int32_t dpi, std::int32_t textLines, bool largeText) noexcept;

} // namespace toolbelt
