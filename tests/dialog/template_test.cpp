// Templates built word by word, and the header's layout at every width and resolution.
#include "Includes/cDlg/dialog_template.h"

#include <cstring>

#include "Includes/cDlg/colored_dlg.h"
#include "Includes/cDlg/header_layout.h"
#include "tests/dialog/support.h"

namespace toolbelt::test {
namespace {

using Words = std::vector<std::uint16_t>;

// Each with a menu, class or title by number or name and two controls, the first one's text by name and with data that
// counts 4 bytes: the second one's place is the same whether that classic count counts itself or not. 0xAAAA only fills
// up to a multiple of four.
const Words classicTemplate = {0x0040, 0x80C8, 0x0100, 1, 2, 1, 2, 3, 4,  0xFFFF, 5,    'C',    0, 'T', 0, 8, 'F', 0, //
                               0,      0x5000, 0,      0, 1, 2, 3, 4, 9,  0xFFFF, 0x80, 'B',    0, 4,   1, 2,         //
                               0,      0x5000, 0,      0, 1, 2, 3, 4, 10, 'C',    0,    0xFFFF, 7, 0};
const Words messageFontTemplate = {0x0040, 0x80C8, 0x0100, 1, 0, 1, 2, 3, 4, 0, 0, 0, 0x7FFF};
const Words extendedTemplate = {
    1, 0xFFFF, 0, 0, 0x0100, 1,      0x0040, 0x80C8, 2, 1, 2,  3, 4,      0,    0,   'T', 0, 8, 400, 256,    'F', 0, //
    0, 0,      0, 0, 0,      0x5000, 1,      2,      3, 4, 9,  0, 0xFFFF, 0x80, 'B', 0,   4, 1, 2,   0xAAAA,         //
    0, 0,      0, 0, 0,      0x5000, 1,      2,      3, 4, 10, 0, 'C',    0,    0,   0};

// The first size bytes in front of an inaccessible page.
std::uint8_t* atEdge(const Words& words, std::size_t size)
{
    constexpr std::size_t PAGE = 0x1000;
    static void* const pages = VirtualAlloc(nullptr, 2 * PAGE, MEM_RESERVE, PAGE_NOACCESS);
    auto* const end = static_cast<std::uint8_t*>(VirtualAlloc(pages, PAGE, MEM_COMMIT, PAGE_READWRITE)) + PAGE;
    return static_cast<std::uint8_t*>(std::memcpy(end - size, words.data(), size));
}

std::size_t extentOf(const Words& words)
{
    return templateExtent(atEdge(words, 2 * words.size()), 2 * words.size());
}

TEST(DialogTemplate, PatchesTheRightWordAndRefusesWhatIsCut)
{
    for (const Words& words : {classicTemplate, messageFontTemplate, extendedTemplate}) {
        const bool isExtended = words[1] == 0xFFFF;
        const std::size_t whole = 2 * words.size();
        for (std::size_t size = 0; size <= whole; ++size) {
            std::uint8_t* const bytes = atEdge(words, size);
            ASSERT_EQ(templateExtent(bytes, size), size == whole ? size : 0) << size;
            ASSERT_EQ(setTemplateRightToLeft(bytes, size), size >= (isExtended ? 26u : 18u)) << size;
        }
        Words expected = words; // extended style 0x00010100: the second double word, or the third
        expected[isExtended ? 5 : 3] = 0x41;
        std::uint8_t* const patched = atEdge(words, whole);
        setTemplateRightToLeft(patched, whole);
        EXPECT_EQ(std::memcmp(patched, expected.data(), whole), 0);

        Words many = words;
        many[isExtended ? 8 : 4] = 0xFFFF;
        EXPECT_EQ(extentOf(many), 0u);
    }
    Words otherVersion = extendedTemplate;
    otherVersion[0] = 2;
    EXPECT_EQ(extentOf(otherVersion), 0u);
    Words longData = extendedTemplate;
    longData[38] = 0xFFFF;
    EXPECT_EQ(extentOf(longData), 0u);
    EXPECT_EQ(templateExtent(std::vector<std::uint8_t>(LARGEST_TEMPLATE + 1).data(), LARGEST_TEMPLATE + 1), 0u);

    // A count of 2 puts the second control four bytes earlier when it counts itself. Whole one way, either template is
    // read to the count of the second control's data, behind the end, the other way.
    Words counting = classicTemplate, notCounting = classicTemplate;
    counting[31] = notCounting[31] = 2;
    counting.erase(counting.begin() + 32, counting.begin() + 34);
    const Words names = {0xFFFF, 0x80, 'B', 0};
    std::copy(names.begin(), names.end(), notCounting.begin() + 43);
    for (const Words& words : {counting, notCounting}) EXPECT_EQ(extentOf(words), 2 * words.size() + 2);
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
