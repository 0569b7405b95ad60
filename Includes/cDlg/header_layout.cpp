#include "Includes/cDlg/header_layout.h"

#include <algorithm>

#include "Includes/cDlg/colored_dlg.h"

namespace toolbelt {
namespace {

// At the base resolution. A line is as high as its font needs at that many points, accents and descenders included.
constexpr std::int32_t MARGIN = 12;
constexpr std::int32_t MARGIN_ABOVE = 10;
constexpr std::int32_t ICON_GAP = 12;
constexpr std::int32_t LINE_GAP = 2;
constexpr std::int32_t TITLE_LINE = 20;
constexpr std::int32_t TEXT_LINE = 14;
constexpr std::int32_t LARGE_TEXT_LINE = 17;

// Figures beyond these are taken for them: no line is without height, and no sum overflows.
constexpr std::int32_t LEAST_DPI = 48, MOST_DPI = 4800;
constexpr std::int32_t MOST_LINES = 1000;
constexpr std::int32_t MOST_PIXELS = 0x1000000;

class Scale
{
public:
    Scale(std::int32_t dpi, bool largeText) : dpi_(std::clamp(dpi, LEAST_DPI, MOST_DPI)), largeText_(largeText) {}
    std::int32_t operator()(std::int32_t pixels) const
    {
        return static_cast<std::int32_t>((std::int64_t(pixels) * dpi_ + LAYOUT_BASE_DPI / 2) / LAYOUT_BASE_DPI);
    }
    std::int32_t textLine() const { return (*this)(largeText_ ? LARGE_TEXT_LINE : TEXT_LINE); }
    // Of the title and so many lines of text.
    std::int32_t block(std::int32_t lines) const
    {
        return (*this)(TITLE_LINE) + (*this)(LINE_GAP) + lines * textLine();
    }

private:
    std::int32_t dpi_;
    bool largeText_;
};

LayoutBox cut(const LayoutBox& box, std::int32_t width, std::int32_t height)
{
    const std::int32_t left = std::clamp(box.left, 0, width), top = std::clamp(box.top, 0, height);
    const std::int32_t right = std::clamp(box.left + box.width, left, width);
    const std::int32_t bottom = std::clamp(box.top + box.height, top, height);
    return {left, top, right - left, bottom - top};
}

} // namespace

HeaderLayout layoutHeader(std::int32_t width, std::int32_t height, std::int32_t dpi, std::int32_t iconSize,
                          bool largeText) noexcept
{
    for (std::int32_t* const size : {&width, &height, &iconSize}) *size = std::clamp(*size, 0, MOST_PIXELS);
    const Scale scale(dpi, largeText);
    const std::int32_t margin = scale(MARGIN);
    const LayoutBox icon = {margin, (height - iconSize) / 2, iconSize, iconSize};
    const std::int32_t left = margin + (iconSize > 0 ? iconSize + scale(ICON_GAP) : 0);
    const std::int32_t room = height - 2 * scale(MARGIN_ABOVE);
    const std::int32_t lines = std::max((room - scale.block(0)) / scale.textLine(), 1);
    const std::int32_t top = std::max((height - scale.block(lines)) / 2, 0);
    const std::int32_t across = width - margin - left;
    const LayoutBox title = {left, top, across, scale(TITLE_LINE)};
    const LayoutBox text = {left, top + scale.block(0), across, lines * scale.textLine()};
    return {cut(icon, width, height), cut(title, width, height), cut(text, width, height)};
}

std::int32_t suitableHeaderHeight(std::int32_t dpi, std::int32_t textLines, bool largeText) noexcept
{
    const Scale scale(dpi, largeText);
    return scale.block(std::clamp(textLines, 1, MOST_LINES)) + 2 * scale(MARGIN_ABOVE);
}

} // namespace toolbelt
