#include "Includes/stringFuncs/formatter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <limits>
#include <vector>

#include "tests/stringFuncs/text_support.h"

namespace toolbelt {
namespace {

std::u16string formatted(const wchar_t* format, ...)
{
    static wchar_t buffer[8192];
    va_list arguments;
    va_start(arguments, format);
    const std::int32_t written = formatWideV(buffer, 8192, format, arguments);
    va_end(arguments);
    EXPECT_EQ(buffer[written], 0);
    return test::units(buffer, written);
}

#if defined(_WIN32)
constexpr bool libraryIsRight = false; // the one linked here strays from the standard in many corners
#else
constexpr bool libraryIsRight = true;
#endif
std::uint64_t digest; // FNV-1a over all texts compared, by which other systems know the C library's texts again

// Compares a conversion with the C library's, each given in its own dialect. Returns whether they agree.
template <typename Value>
bool agrees(const std::string& lead, const std::string& ours, const std::string& theirs, Value value)
{
    static char expected[8192];
    static wchar_t got[8192];
    wchar_t format[64] = {};
    const std::string ourFormat = lead + ours;
    std::copy(ourFormat.begin(), ourFormat.end(), format);
    const std::int32_t written = formatWide(got, 8192, format, value);
    for (std::int32_t i = 0; i <= written; ++i) digest = (digest ^ got[i]) * 0x100000001B3;
    if (!libraryIsRight) return true;
    const int length = std::snprintf(expected, sizeof expected, (lead + theirs).c_str(), value);
    if (written == length && std::equal(expected, expected + length + 1, got)) return true;
    ADD_FAILURE() << ourFormat << " of " << value << ": " << testing::PrintToString(test::units(got, written))
                  << " is not " << expected;
    return false;
}

std::vector<std::string> leads(std::initializer_list<const char*> widths, std::initializer_list<const char*> precisions)
{
    std::vector<std::string> result;
    for (int flags = 0; flags < 32; ++flags)
        for (const char* width : widths)
            for (const char* precision : precisions) {
                std::string lead = "%";
                for (int i = 0; i < 5; ++i)
                    if (flags >> i & 1) lead += "-+ #0"[i];
                result.push_back(lead + width + precision);
            }
    return result;
}

TEST(Formatter, NumbersReadAsTheCLibraryWritesThem)
{
    constexpr auto inf = std::numeric_limits<double>::infinity();
    constexpr std::int64_t whole[] = {0, 1, -1, 8, 0x7FFFFFFF, -0x7FFFFFFF - 1LL, 1234567890123456789, INT64_MIN};
    const double doubles[] = {0.0,          -0.0, 1.0,      -1.5,     0.1,     2.5,   9.995,       99999.95,
                              999999.5,     1e-4, 1e-5,     123456.0, 1234567, 1e100, -1e-100,     1e308,
                              DBL_TRUE_MIN, 0.5,  1e15 / 3, 1e23,     -inf,    inf,   std::nan("")};
    std::uint32_t compared = 0;
    digest = 0xCBF29CE484222325;
    for (const std::string& lead : leads({"", "7", "30"}, {"", ".", ".0", ".1", ".5", ".20"})) {
        for (const std::string letter : {"d", "i", "u", "o", "x", "X"}) {
            for (const std::int64_t value : whole) {
                const auto narrow = static_cast<std::int32_t>(value);
                for (const auto& [ours, theirs] : {std::pair{"", ""}, {"l", ""}, {"I", ""}, {"I32", ""}, {"h", "h"}})
                    if (++compared; !agrees(lead, ours + letter, theirs + letter, narrow)) return;
                if (++compared; !agrees(lead, "I64" + letter, "ll" + letter, static_cast<long long>(value))) return;
            }
        }
        for (const std::string letter : {"e", "E", "f", "g", "G"})
            for (const double value : doubles) {
                // The C library loses zeros of # where rounding carries into the exponent's form.
                const bool carries =
                    (value == 99999.95 && lead.ends_with(".5")) || (value == 999999.5 && lead.find('.') == lead.npos);
                if (carries && (letter == "g" || letter == "G") && lead.find('#') != lead.npos) continue;
                if (++compared; !agrees(lead, letter, letter, value)) return;
            }
    }
    // Precisions beyond every digit that a double has.
    for (const std::string& lead : leads({"", "4000"}, {".766", ".1099", ".1100", ".1101", ".3000"}))
        for (const std::string letter : {"e", "f", "G"})
            for (const double value : {0.0, 0.1, 1e308, 5e-324, 2.2250738585072011e-308, 123456.0})
                if (++compared; !agrees(lead, letter, letter, value)) return;
    EXPECT_EQ(formatted(L"%#g %#.1g %#.3g %#.5G", 999999.5, 9.995, 9.995, 99999.95),
              u"1.00000e+06 1.e+01 9.99 1.0000E+05");
    std::printf("%u combinations compared%s\n", compared, libraryIsRight ? "" : " by digest");
    EXPECT_EQ(compared, 237696u);
    EXPECT_EQ(digest, 0xC05B3D763BEDF39u);
}

TEST(Formatter, TextsAndCharacters)
{
    const wchar_t unterminated[] = {L'a', L'b'};
    const char bytes[] = {'a', '\xC3', '\xA4', '\xF0', '\x9F', '\x98', '\x80', 'z', '\xE2', '\x82', 0};
    EXPECT_EQ(formatted(L"%s|%ls|%lS|%5.2s|%-4.1s|", L"wide", L"l", L"L", unterminated, unterminated),
              u"wide|l|L|   ab|a   |");
    EXPECT_EQ(formatted(L"%S|%6.3S|%.4S|%-6.2S|%hs", bytes, bytes, bytes, bytes, "h"),
              u"a\u00E4\U0001F600z\uFFFD|    a\u00E4|a\u00E4\U0001F600|a\u00E4    |h");
    EXPECT_EQ(formatted(L"%c%C%hc%lc%lC%4c%-3c|%C", 0x20AC, 'n', 'h' + 256, 0x20AC, 0x20AC, 'r', 'l', 0xE4),
              u"\u20ACnh\u20AC\u20AC   rl  |\uFFFD");
    EXPECT_EQ(formatted(L"%c", 0), std::u16string(1, u'\0'));
    EXPECT_EQ(formatted(L"%s|%S|%hs|%8s|%.3s", nullptr, nullptr, nullptr, nullptr, nullptr),
              u"<Null>|<Null>|<Null>|  <Null>|<Nu");
    EXPECT_EQ(formatted(L"%*d|%*d|%.*d|%-*.*f|", 5, 42, -5, 42, -1, 42, 7, 2, 1.0), u"   42|42   |42|1.00   |");
}

TEST(Formatter, PointersCountsAndWhatIsNoConversion)
{
    const auto* const address = reinterpret_cast<const void*>(std::uintptr_t(0xBEEF));
    const std::u16string shown = u"0x" + std::u16string(2 * sizeof address - 4, u'0') + u"BEEF";
    EXPECT_EQ(formatted(L"%p|%#p|%+0p", address, address, address), shown + u"|" + shown + u"|" + shown);
    int untouched = 77;
    EXPECT_EQ(formatted(L"ab%n%hn%d", &untouched, &untouched, 5), u"ab5");
    EXPECT_EQ(untouched, 77);
    EXPECT_EQ(formatted(L"%y%d %lld", 1, 2), u"'Invalid value'1 'Invalid value'd"); // letters that take no argument
    EXPECT_EQ(formatted(L"100%"), u"100%");
    EXPECT_EQ(formatted(L"5%, 6 %! %% %-08.3%d %5%%", 3), u"5%, 6 %! % %-08.33 %5%");
    EXPECT_EQ(formatted(L"%#I6"), u"%#I6");
    EXPECT_EQ(formatted(nullptr), u"");

    // 100 units are a directive, 101 are none; the argument is taken, so that the next one keeps its place.
    const std::u16string minuses(98, u'-');
    EXPECT_EQ(formatted(test::wide(u"%" + minuses + u"g%d"), 1.5, 9), u"1.59");
    EXPECT_EQ(formatted(test::wide(u"%-" + minuses + u"g%d"), 1.5, 9), u"'Invalid value'9");
}

// That every capacity gets a beginning of the whole text is tested beside a page that cannot be touched.
TEST(Formatter, TakesWidthsAndPrecisionsOfAnySize)
{
    EXPECT_EQ(formatted(L"%2147483647d", 7), std::u16string(8191, u' '));
    EXPECT_EQ(formatted(L"%.2147483647e", 0.5), u"5." + std::u16string(8189, u'0'));
    EXPECT_EQ(formatted(L"%*d|%.*d", std::numeric_limits<int>::min(), 1, std::numeric_limits<int>::max(), 2).size(),
              8191u);
    EXPECT_EQ(formatted(L"%99999999999999999999.9x", 7).size(), 8191u);
    EXPECT_EQ(formatWide(nullptr, 10, L"x"), 0);
    wchar_t untouched = L'u';
    EXPECT_EQ(formatWide(&untouched, 0, L"x") + formatWide(&untouched, -1, L"x"), 0);
    EXPECT_EQ(untouched, L'u');
}

} // namespace
} // namespace toolbelt
