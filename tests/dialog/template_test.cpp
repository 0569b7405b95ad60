// Templates built word by word, and the header's layout at every width and resolution.
#include "Includes/cDlg/dialog_template.h"

#include <cstring>

#include "Includes/cDlg/header_layout.h"
#include "tests/dialog/support.h"

namespace toolbelt::test {
namespace {

using Words = std::vector<std::uint16_t>;

// Each with a menu, class or title by number or name and two controls, the first one's text by name and with data that
// counts 4 bytes: whole whether the classic count counts itself or not. 0xAAAA only fills up to a multiple of four.
const Words classicTemplate = {0x0040, 0x80C8, 0x0100, 1, 2, 1, 2, 3, 4,  0xFFFF, 5,    'C',    0, 'T', 0, 8, 'F', 0, //
                               0,      0x5000, 0,      0, 1, 2, 3, 4, 9,  0xFFFF, 0x80, 'B',    0, 4,   1, 2,         //
                               0,      0x5000, 0,      0, 1, 2, 3, 4, 10, 'C',    0,    0xFFFF, 7, 0};
const Words messageFontTemplate = {0x0040, 0x80C8, 0x0100, 1, 0, 1, 2, 3, 4, 0, 0, 0, 0x7FFF};
const Words extendedTemplate = {
    1, 0xFFFF, 0, 0, 0x0100, 1,      0x0040, 0x80C8, 2, 1, 2,  3, 4,      0,    0,   'T', 0, 8, 400, 256,    'F', 0, //
    0, 0,      0, 0, 0,      0x5000, 1,      2,      3, 4, 9,  0, 0xFFFF, 0x80, 'B', 0,   4, 1, 2,   0xAAAA,         //
    0, 0,      0, 0, 0,      0x5000, 1,      2,      3, 4, 10, 0, 'C',    0,    0,   0};

// The first size bytes in front of an inaccessible page.
class Edge
{
public:
    Edge() : pages_(static_cast<std::uint8_t*>(VirtualAlloc(nullptr, 2 * PAGE, MEM_RESERVE, PAGE_NOACCESS)))
    {
        VirtualAlloc(pages_, PAGE, MEM_COMMIT, PAGE_READWRITE);
    }
    ~Edge() { VirtualFree(pages_, 0, MEM_RELEASE); }
    std::uint8_t* put(const Words& words, std::size_t size)
    {
        return static_cast<std::uint8_t*>(std::memcpy(pages_ + PAGE - size, words.data(), size));
    }

private:
    static constexpr std::size_t PAGE = 0x1000;
    std::uint8_t* const pages_;
};

TEST(DialogTemplate, PatchesTheRightWordAndRefusesWhatIsCut)
{
    Edge edge;
    for (const Words& words : {classicTemplate, messageFontTemplate, extendedTemplate}) {
        const bool isExtended = words[1] == 0xFFFF;
        const std::size_t whole = 2 * words.size();
        for (std::size_t size = 0; size <= whole; ++size) {
            std::uint8_t* const bytes = edge.put(words, size);
            ASSERT_EQ(isWholeTemplate(bytes, size), size == whole) << size;
            ASSERT_EQ(setTemplateRightToLeft(bytes, size), size >= (isExtended ? 26u : 18u)) << size;
        }
        Words expected = words; // extended style 0x00010100: the second double word, or the third
        expected[isExtended ? 5 : 3] = 0x41;
        EXPECT_EQ(std::memcmp(edge.put(expected, whole), expected.data(), whole), 0);
        std::uint8_t* const patched = edge.put(words, whole);
        setTemplateRightToLeft(patched, whole);
        EXPECT_EQ(std::memcmp(patched, expected.data(), whole), 0);

        Words many = words;
        many[isExtended ? 8 : 4] = 0xFFFF;
        EXPECT_FALSE(isWholeTemplate(edge.put(many, whole), whole));
    }
    Words longData = extendedTemplate;
    longData[38] = 0xFFFF;
    EXPECT_FALSE(isWholeTemplate(edge.put(longData, 2 * longData.size()), 2 * longData.size()));
    Words oneWay = classicTemplate; // whole when the count counts itself, else the second control is cut off
    oneWay[31] = 2;
    oneWay.erase(oneWay.begin() + 32, oneWay.begin() + 34);
    EXPECT_FALSE(isWholeTemplate(edge.put(oneWay, 2 * oneWay.size()), 2 * oneWay.size()));
}

TEST(HeaderLayout, StaysInTheBandAtEveryResolution)
{
    for (const int dpi : {0, 96, 120, 144, 168, 192}) {
        for (const bool large : {false, true}) {
            const auto scaled = [dpi](int pixels) { return MulDiv(pixels, dpi, 96); };
            const int icon = scaled(32), height = suitableHeaderHeight(dpi, 2, large);
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
