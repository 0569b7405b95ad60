// Which templates are refused, and the header's layout at every width and resolution.
#include "Includes/cDlg/dialog_template.h"

#include "Includes/cDlg/colored_dlg.h"
#include "Includes/cDlg/header_layout.h"
#include "tests/dialog/support.h"

namespace toolbelt::test {
namespace {

// Where templates end and what is changed in them is compared with a model; those of the tests' dialogs must be read.
TEST(DialogTemplate, ReadsEachFontAndRefusesOtherVersionsAndWhatIsTooLarge)
{
    // A menu by number, a title, a font, and one control; only with an extended version of 1 it is read.
    std::uint16_t words[] = {1, 0xFFFF, 0,   0, 0x0100, 1,   0x0040, 0x80C8, 1,      1,    2,   3, 4,
                             0, 0,      'T', 0, 8,      400, 0,      'F',    0,      0,    0,   0, 0,
                             0, 0x5000, 1,   2, 3,      4,   9,      0,      0xFFFF, 0x80, 'B', 0, 0};
    for (const std::uint16_t version : {1, 2}) {
        words[0] = version;
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(words);
        EXPECT_EQ(templateExtent(bytes, sizeof words), version == 1 ? sizeof words : 0);
    }
    // The font of message boxes has neither size nor name.
    const std::uint16_t messageFont[] = {0x0040, 0x80C8, 0x0100, 1, 0, 1, 2, 3, 4, 0, 0, 0, 0x7FFF};
    EXPECT_EQ(templateExtent(reinterpret_cast<const std::uint8_t*>(messageFont), sizeof messageFont),
              sizeof messageFont);
    EXPECT_EQ(templateExtent(std::vector<std::uint8_t>(LARGEST_TEMPLATE + 1).data(), LARGEST_TEMPLATE + 1), 0u);
}

// Of a line of the bold font on a screen of that resolution.
int lineHeight(const wchar_t* face, int points, int dpi)
{
    const HFONT font = CreateFontW(-MulDiv(points, dpi, 72), 0, 0, 0, FW_BOLD, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0,
                                   VARIABLE_PITCH | FF_SWISS, face);
    const HDC device = CreateCompatibleDC(nullptr);
    const HGDIOBJ before = SelectObject(device, font);
    RECT needed = {};
    DrawTextW(device, L"\u00C4gj", -1, &needed, DT_CALCRECT | DT_SINGLELINE);
    SelectObject(device, before);
    DeleteDC(device);
    DeleteObject(font);
    return needed.bottom;
}

TEST(HeaderLayout, StaysInTheBandAtEveryResolution)
{
    for (const int dpi : {0, 96, 120, 144, 168, 192}) {
        for (const bool large : {false, true}) {
            const auto scaled = [dpi](int pixels) { return MulDiv(pixels, dpi, 96); };
            const int icon = scaled(32), height = suitableHeaderHeight(dpi, 2, large);
            if (dpi != 0) { // what the fonts need is there
                const HeaderLayout layout = layoutHeader(scaled(400), height, dpi, icon, large);
                EXPECT_GE(layout.title.height, lineHeight(L"ARIAL", 12, dpi)) << dpi;
                EXPECT_GE(layout.text.height, 2 * lineHeight(L"MS Shell Dlg", large ? 10 : 8, dpi)) << dpi;
            }
            for (int width = -1; width <= scaled(700); width += 7) {
                for (const int band : {0, 1, scaled(17), height, 2 * height}) {
                    const auto [iconBox, title, text] = layoutHeader(width, band, dpi, icon, large);
                    for (const LayoutBox& box : {iconBox, title, text}) {
                        ASSERT_TRUE(box.left >= 0 && box.top >= 0 && box.width >= 0 && box.height >= 0);
                        ASSERT_LE(box.left + box.width, std::max(width, 0));
                        ASSERT_LE(box.top + box.height, band);
                    }
                    ASSERT_TRUE(title.width == 0 || iconBox.left + iconBox.width < title.left);
                    ASSERT_LE(title.top + title.height, text.top);
                }
            }
        }
    }
}

} // namespace
} // namespace toolbelt::test
