#include "Includes/stringFuncs/wcs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Includes/stringFuncs/conversion.h"
#include "Includes/stringFuncs/mbstr.h"
#include "tests/stringFuncs/text_support.h"
#include "tests/support/test_heap.h"

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#endif

namespace toolbelt {
namespace {

using test::formatV;
using test::Recorder;
using test::units;

// The invariants: zero at the length, and nothing but zeros behind it.
template <typename String>
void expectSound(const String& string)
{
    ASSERT_EQ(string.text() ? string.length() < string.capacity() : !string.length() && !string.capacity(), true);
    for (std::int32_t i = string.length(); i < string.capacity(); ++i) ASSERT_EQ(string.text()[i], 0) << i;
}

// The strings' heap: every block that was taken comes back wiped.
struct WipingHeap : test::TestHeap
{
    ~WipingHeap() { EXPECT_EQ(secretsReleased(), allocations()); }
};

TEST(Strings, GrowWhenTheNeedReachesTheCapacity)
{
    WipingHeap heap;
    cWCS text;
    expectSound(text);
    EXPECT_EQ(text.Append(nullptr, 5), 6);
    EXPECT_EQ(units(text), std::u16string(5, u'\0'));
    EXPECT_EQ(text.SetLength(2046), 2047);
    EXPECT_EQ(text.capacity(), 2048);
    EXPECT_EQ(heap.allocations(), 1u);
    text.text()[text.capacity() - 1] = L'w'; // to be wiped as well
    EXPECT_EQ(text.Append(L"x"), 2);         // need 2048 >= 2048, though it would just fit
    EXPECT_EQ(heap.allocations(), 2u);
    expectSound(text);
    for (const auto& [length, capacity] : {std::pair{2047, 2048}, {2048, 4096}, {4095, 4096}, {4096, 6144}}) {
        cWCS fresh, assigned, converted;
        cMBStr narrow;
        EXPECT_EQ(fresh.SetLength(length), length + 1);
        EXPECT_EQ(assigned.Assign(nullptr, length), length + 1);
        EXPECT_EQ(narrow.SetLength(2 * length + 1), 2 * length + 2);
        // Conversion grows when capacity < needed + 1, so that a full buffer is kept.
        const std::string bytes(static_cast<std::size_t>(length), 'a');
        converted.AssignMultibyte(bytes.c_str());
        const std::uint32_t before = heap.allocations();
        converted.AssignMultibyte(bytes.c_str());
        EXPECT_EQ(heap.allocations(), before);
        expectSound(converted);
        for (const cWCS* const string : {&fresh, &assigned, &converted}) EXPECT_EQ(string->capacity(), capacity);
        EXPECT_EQ(narrow.capacity(), 2 * capacity);
    }
    text.SetLength(1);
    text.text()[text.capacity() - 1] = L'w'; // and by the destructor
}

TEST(Strings, CutExtendAndMeasure)
{
    WipingHeap heap;
    const Recorder recorder;
    cWCSF text(L"secrets", 3);
    EXPECT_EQ(text.Append(L"ret"), 4);
    EXPECT_EQ(text.SetLength(6), 7);
    EXPECT_EQ(units(text), u"secret");
    EXPECT_EQ(text.SetLength(2), 3);
    EXPECT_EQ(units(text), u"se");
    expectSound(text); // what was cut off is wiped
    EXPECT_EQ(text.SetLength(4), 5);
    EXPECT_EQ(units(text), std::u16string(u"se\0\0", 4));
    std::fill_n(text.text(), text.capacity(), L'w');
    text.text()[7] = 0;
    text.FixLength(); // written beyond the old end and ended at 7
    EXPECT_EQ(units(text), u"wwwwwww");
    expectSound(text);
    std::fill_n(text.text(), text.capacity(), L'w');
    text.FixLength(); // never terminated
    EXPECT_EQ(text.SetLength(-1), 0);
    EXPECT_EQ(Recorder::lines.size(), 1u);
    EXPECT_EQ(text.length(), text.capacity() - 1);
    expectSound(text);
    cWCS empty;
    empty.FixLength();
    EXPECT_EQ(empty.SetLength(0), 1);
    expectSound(empty);
}

TEST(Strings, SourcesInsideTheObjectSurvive)
{
    WipingHeap heap;
    const std::u16string expected = u"ab" + std::u16string(1500, u'c');
    cWCStr text(test::wide(expected)), small(L"xyz");
    text.Append(text.text() + 1);                                  // grows
    EXPECT_EQ(text.Append(text.text() + text.length() - 1, 2), 3); // with the terminator, in place
    EXPECT_EQ(units(text), expected + expected.substr(1) + u'c' + u'\0');
    EXPECT_EQ(text.Assign(text.text() + 1, 4), 5);
    EXPECT_EQ(units(text), u"bccc");
    expectSound(text);
    small.Assign(small.text() + 1, 2047); // grows
    EXPECT_EQ(units(small).substr(0, 3), std::u16string(u"yz\0", 3));
    small.Format(L"<%s>", small.text());
    small.AppendFormat(L"%s|%d", small.text(), 7);
    EXPECT_EQ(units(small), u"<yz><yz>|7");
    EXPECT_EQ(units(formatV(small, L"a%s", small.text())), u"a<yz><yz>|7");
    EXPECT_EQ(small.capacity(), 6144);
    // Bytes that were read into the string's own buffer.
    small.Assign(reinterpret_cast<const wchar_t*>("h\xC3\xA4!\0"), 3);
    small.AssignMultibyte(reinterpret_cast<const char*>(small.text()));
    EXPECT_EQ(units(small), u"h\u00E4!");
    expectSound(small);
    small.Format(L"%5000d", 1); // cut where the buffer ends
    small.AppendFormat(L"%s%5000d", L"more", 1);
    EXPECT_EQ(units(small), std::u16string(4095, u' ') + u"more" + std::u16string(4091, u' '));
    expectSound(small);
}

TEST(Strings, MultibyteText)
{
    WipingHeap heap;
    cWCS text;
    text.AssignMultibyte("\xC3\xA4");
    text.AssignMultibyte(nullptr); // changes nothing
    EXPECT_EQ(units(text), u"\u00E4");
    text.AssignMultibyte("a\0b\xF0\x9F\x98\x80xyz", 7);
    EXPECT_EQ(units(text), std::u16string(u"a\0b\U0001F600", 5));
    expectSound(text);
    text.AssignMultibyte("\xE2\x82\xAC\x80\xE4", 5, 1252);
    EXPECT_EQ(units(text), u"\u00E2\u201A\u00AC\u20AC\u00E4");
    text.AssignMultibyte("a\xFFx\xC3", -1, codePageUtf8);
    EXPECT_EQ(units(text), u"a\uFFFDx\uFFFD");
    text.AssignMultibyte("abc", 3, 54321); // no such code page
    EXPECT_EQ(units(text), u"");
    expectSound(text);
    std::fill_n(text.text(), 9, L'w');
    text.AssignMultibyte("ab"); // over what was written behind the end
    EXPECT_EQ(units(text.text()), u"ab");
    EXPECT_EQ(cWCSFromMbs(nullptr, 1).text(), nullptr);
    EXPECT_EQ(units(cWCSFromMbs("\xC3\xA4:b")), u"\u00E4:b");
    EXPECT_EQ(units(cWCSFromMbs("a:b/c?*@\"'\\<> |.", 1)), u"a.bbc$xaQQ${} |.");

    cMBStr narrow;
    narrow.AssignWide(L"h\u00E4\U0001F600\xD800!");
    EXPECT_STREQ(narrow.text(), "h\xC3\xA4\xF0\x9F\x98\x80\xEF\xBF\xBD!");
    narrow.AssignWide(L"\u20AC\u00E4", 1, 1252);
    EXPECT_STREQ(narrow.text(), "\x80");
}

TEST(Strings, CodePageAndFlagsFollowTheVersion)
{
    using Case = std::tuple<VersionRecord, std::int32_t, int>;
    const Case cases[] = {{{276, 4, 0, 0, 1}, 0, 0},      {{276, 4, 10, 0, 1}, 0, 0},    {{276, 4, 90, 0, 1}, 65001, 0},
                          {{276, 4, 0, 0, 2}, 65001, 4},  {{276, 5, 0, 0, 2}, 65001, 4}, {{276, 5, 1, 0, 2}, 65001, 6},
                          {{276, 6, 0, 0, 2}, 65001, 6},  {{276, 7, 0, 0, 2}, 65001, 7}, {{276, 10, 0, 0, 2}, 65001, 7},
                          {{276, 10, 10, 0, 1}, 65001, 0}};
    for (const auto& [record, codePage, expected] : cases) {
        const VersionFlags flags = flagsOf(record);
        const std::pair got(codePageOf(record), flags.ntFamily * 4 + flags.nt51 * 2 + flags.ntAbove6);
        EXPECT_EQ(got, std::pair(codePage, expected)) << record.majorVersion << '.' << record.minorVersion;
    }
    EXPECT_TRUE(systemVersion().record.size == 276 && systemVersion().flags.nt51 && DefaultCodePage() == 65001);
}

TEST(Strings, ProgrammingErrorsAreReportedAndSkipped)
{
    const Recorder recorder;
    const test::TestHeap heap;
    void* block = heap::allocate(10);
    SafeFree(&block);
    EXPECT_EQ(block, nullptr);
    SafeFree(nullptr);
    EXPECT_EQ(Recorder::lines.back(), u"Assertion failed: false, file stringFuncs, line 146");
    setAssertionReport([](const wchar_t* expression, const wchar_t* file, std::int32_t line) {
        Recorder::lines = {units(expression), units(file), std::u16string(1, static_cast<char16_t>(line))};
    });
    SafeFree(static_cast<char**>(nullptr));
    EXPECT_EQ(Recorder::lines, (std::vector<std::u16string>{u"false", u"stringFuncs", u"\u0092"})); // 146
}

#if defined(_WIN32)
TEST(Strings, SystemErrors)
{
    cWCStr text(L"before");
    const std::u16string shown = units(text.SystemErrorText(5));
    EXPECT_EQ(shown.substr(shown.size() - 6), u" (0x5)");
    EXPECT_GT(shown.size(), 10u);
    EXPECT_EQ(shown.find_first_of(u"\r\n"), shown.npos);
    SetLastError(2);
    EXPECT_NE(units(text.SystemErrorText(0xFFFFFFFF)).find(u" (0x2)"), shown.npos);
    // ERROR_MR_MID_NOT_FOUND for a code that has no message.
    EXPECT_EQ(units(text.SystemErrorText(0xDEAD0001)),
              u"FormatMessage error 317, Original error -559087615 (0xDEAD0001)");
}
#endif

} // namespace
} // namespace toolbelt
