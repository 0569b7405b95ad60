#include "Includes/stringFuncs/wcs.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Includes/stringFuncs/conversion.h"
#include "Includes/stringFuncs/diagnostics.h"
#include "Includes/stringFuncs/file_name.h"
#include "Includes/stringFuncs/mbstr.h"
#include "tests/stringFuncs/text_support.h"
#include "tests/support/test_heap.h"

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#endif

namespace toolbelt {
namespace {

using test::units;

// Records what goes to the debug channel and to the assertion report.
struct Recorder
{
    static inline std::vector<std::u16string> lines;
    Recorder()
    {
        lines.clear();
        setDebugChannel([](const wchar_t* message) { lines.push_back(units(message)); });
    }
    ~Recorder()
    {
        setDebugChannel(nullptr);
        setAssertionReport(nullptr);
    }
};
constexpr const char16_t* outOfMemory = u"Assertion! Error in memory allocation!";

// The invariants: zero at the length, and nothing but zeros behind it.
template <typename String>
void expectSound(const String& string)
{
    if (string.text() == nullptr) {
        EXPECT_EQ(string.capacity() | string.length(), 0);
        return;
    }
    ASSERT_LT(string.length(), string.capacity());
    for (std::int32_t i = string.length(); i < string.capacity(); ++i) ASSERT_EQ(string.text()[i], 0) << i;
}

// The strings' heap: every block that was taken comes back wiped.
struct WipingHeap : test::TestHeap
{
    ~WipingHeap() { EXPECT_EQ(secretsReleased(), allocations()); }
};

const wchar_t* formatV(cWCStr& text, const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const wchar_t* result = text.FormatV(format, arguments);
    va_end(arguments);
    return result;
}

TEST(Strings, GrowWhenTheNeedReachesTheCapacity)
{
    WipingHeap heap;
    cWCS text;
    expectSound(text);
    EXPECT_EQ(text.Append(nullptr, 5), 6);
    EXPECT_EQ(units(text), std::u16string(5, u'\0'));
    EXPECT_EQ(text.capacity(), 2048);
    EXPECT_EQ(text.SetLength(2046), 2047);
    EXPECT_EQ(text.capacity(), 2048);
    EXPECT_EQ(text.Append(L"x"), 2); // need 2048 >= 2048, though it would just fit
    EXPECT_EQ(text.capacity(), 4096 / 2);
    EXPECT_EQ(heap.allocations(), 2u);
    expectSound(text);
    struct
    {
        std::int32_t length, capacity;
    } const steps[] = {{2047, 2048}, {2048, 4096}, {4095, 4096}, {4096, 6144}};
    for (const auto& step : steps) {
        cWCS fresh, assigned;
        cMBStr narrow;
        EXPECT_EQ(fresh.SetLength(step.length), step.length + 1);
        EXPECT_EQ(assigned.Assign(nullptr, step.length), step.length + 1);
        EXPECT_EQ(narrow.SetLength(2 * step.length + 1), 2 * step.length + 2);
        EXPECT_EQ(fresh.capacity(), step.capacity);
        EXPECT_EQ(assigned.capacity(), step.capacity);
        EXPECT_EQ(narrow.capacity(), 2 * step.capacity);
        // Conversion grows when capacity < needed + 1, so that a full buffer is kept.
        cWCS converted;
        const std::string bytes(static_cast<std::size_t>(step.length), 'a');
        converted.AssignMultibyte(bytes.c_str());
        const std::uint32_t before = heap.allocations();
        converted.AssignMultibyte(bytes.c_str());
        EXPECT_EQ(converted.capacity(), step.capacity);
        EXPECT_EQ(heap.allocations(), before);
        expectSound(converted);
    }
}

TEST(Strings, CutExtendAndMeasure)
{
    WipingHeap heap;
    const Recorder recorder;
    cWCStr text(L"secret", 3);
    EXPECT_EQ(units(text), u"sec");
    EXPECT_EQ(text.Append(L"ret"), 4);
    EXPECT_EQ(text.SetLength(6), 7);
    EXPECT_EQ(text.SetLength(2), 3);
    EXPECT_EQ(units(text), u"se");
    expectSound(text); // what was cut off is wiped
    EXPECT_EQ(text.SetLength(4), 5);
    EXPECT_EQ(units(text), std::u16string(u"se\0\0", 4));
    for (std::int32_t i = 0; i < text.capacity(); ++i) text.text()[i] = i == 7 ? L'\0' : L'w';
    text.FixLength(); // written beyond the old end and ended at 7
    EXPECT_EQ(units(text), u"wwwwwww");
    expectSound(text);
    for (std::int32_t i = 0; i < text.capacity(); ++i) text.text()[i] = L'w';
    text.FixLength(); // never terminated
    EXPECT_EQ(text.length(), text.capacity() - 1);
    expectSound(text);
    EXPECT_EQ(text.SetLength(-1), 0);
    EXPECT_EQ(Recorder::lines.size(), 1u);
    EXPECT_EQ(text.length(), text.capacity() - 1);

    cWCS empty;
    empty.FixLength();
    EXPECT_EQ(empty.SetLength(0), 1);
    expectSound(empty);
    EXPECT_EQ(cWCSF(nullptr).length(), 0);
    EXPECT_EQ(units(cWCSF(L"abc", 2)), u"ab");
    empty.swap(text);
    EXPECT_EQ(text.text(), nullptr);
    EXPECT_EQ(empty.Assign(nullptr), 1);
    EXPECT_EQ(units(empty), u"");
    expectSound(empty);
}

TEST(Strings, SourcesInsideTheObjectSurvive)
{
    WipingHeap heap;
    std::u16string expected = u"abcdef";
    cWCStr text(L"abcdef");
    while (expected.size() < 20000) { // through several growths
        text.Append(text.text() + 2);
        expected += expected.substr(2);
        ASSERT_EQ(units(text), expected);
    }
    EXPECT_EQ(text.Append(text.text() + text.length() - 1, 2), 3); // with the terminator, in place
    EXPECT_EQ(units(text), expected + u'f' + u'\0');
    EXPECT_EQ(text.Assign(text.text() + 1, 4), 5);
    EXPECT_EQ(units(text), expected.substr(1, 4));
    expectSound(text);
    cWCStr small(L"xyz");
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
}

TEST(Strings, FormattedTextEndsWithTheBuffer)
{
    cWCS text;
    const auto ends = [&](std::int32_t length) {
        EXPECT_EQ(text.length(), length);
        expectSound(text);
    };
    text.Format(L"%5000d", 1);
    ends(4095);
    text.AppendFormat(L"%s%5000d", L"more", 1);
    ends(8190);
    EXPECT_EQ(units(text.Format(L"%d", 1)), u"1");
    ends(1);
    EXPECT_EQ(text.capacity(), 4096);
}

TEST(Strings, WithoutMemoryTheObjectStaysAsItWas)
{
    const std::uint32_t injected = test::forEachFailingAllocation([](test::TestHeap& heap) {
        const Recorder recorder;
        cWCStr text(L"old");
        if (heap.failed()) {
            expectSound(text);
            EXPECT_EQ(text.text(), nullptr);
            EXPECT_EQ(Recorder::lines, std::vector<std::u16string>{outOfMemory});
            return;
        }
        const auto step = [&](bool succeeded, const std::u16string& otherwise = u"old") {
            EXPECT_EQ(succeeded, !heap.failed());
            EXPECT_TRUE(succeeded || units(text) == otherwise);
            expectSound(text);
            return succeeded;
        };
        const std::u16string longer = u"old" + std::u16string(2999, u' ') + u'1';
        const auto steps = [&] {
            if (!step(text.SetLength(3000) != 0)) return;
            text.SetLength(3);
            if (!step(text.Assign(nullptr, 9000) != 0)) return;
            text.Assign(L"old");
            if (!step(units(text.Format(L"%s", L"old")) != u"<NULL>")) return;
            if (!step(units(text.AppendFormat(L"%3000d", 1)) != u"<NULL>")) return;
            if (!step(units(text.AppendFormat(L"%4000d", 1)) != u"<NULL>", longer)) return;
            const std::u16string result = units(formatV(text, L"old"));
            EXPECT_EQ(result, heap.failed() ? u"cWCStr::SetLength( 4096 ) returns <NULL>" : u"old");
            if (!step(result == u"old", longer + std::u16string(3999, u' ') + u'1')) return;
            text.AssignMultibyte(std::string(9000, 'a').c_str()); // the one that has let go of the old text
            if (!step(text.text() != nullptr, u"")) return;
            cWCS fresh;
            step(units(fresh.Format(L"x")) != u"<NULL>", std::u16string(9000, u'a'));
            EXPECT_EQ(fresh.text() == nullptr, heap.failed());
        };
        steps();
        EXPECT_EQ(Recorder::lines, std::vector<std::u16string>(heap.failed(), outOfMemory));
    });
    EXPECT_GE(injected, 20u);
    const Recorder recorder;
    cWCStr text(L"old");
    EXPECT_EQ(text.Append(nullptr, 0x7FFFFFFF), 0); // more than 31 bits hold
    EXPECT_EQ(units(text), u"old");
    EXPECT_EQ(Recorder::lines.size(), 1u);
}

TEST(Strings, MultibyteText)
{
    WipingHeap heap;
    cWCS text;
    text.AssignMultibyte("\xC3\xA4");
    EXPECT_EQ(units(text), u"\u00E4");
    text.AssignMultibyte(nullptr);
    EXPECT_EQ(units(text), u"\u00E4");
    text.AssignMultibyte("a\0b\xF0\x9F\x98\x80xyz", 7);
    EXPECT_EQ(units(text), std::u16string(u"a\0b\U0001F600", 5));
    expectSound(text);
    text.AssignMultibyte("\xE2\x82\xAC\x80\xE4", 5, 1252);
    EXPECT_EQ(units(text), u"\u00E2\u201A\u00AC\u20AC\u00E4");
    text.AssignMultibyte("a\xFF"
                         "b\xC3",
                         -1, codePageUtf8);
    EXPECT_EQ(units(text), u"a\uFFFD"
                           u"b\uFFFD");
    text.AssignMultibyte("abc", 3, 54321); // no such code page
    EXPECT_EQ(units(text), u"");
    expectSound(text);
    text.AssignMultibyte("abc", 0);
    EXPECT_EQ(text.length(), 0);
    EXPECT_EQ(cWCSFromMbs(nullptr, 1).text(), nullptr);
    EXPECT_EQ(units(cWCSFromMbs("\xC3\xA4:b")), u"\u00E4:b");

    cMBStr narrow;
    narrow.AssignWide(L"h\u00E4\U0001F600\xD800!");
    EXPECT_STREQ(narrow.text(), "h\xC3\xA4\xF0\x9F\x98\x80\xEF\xBF\xBD!");
    narrow.AssignWide(nullptr);
    EXPECT_EQ(narrow.length(), 11);
    narrow.AssignWide(L"\u20AC\u00E4", 1, 1252);
    EXPECT_STREQ(narrow.text(), "\x80");
    EXPECT_EQ(narrow.Append("tail", 2), 3);
    EXPECT_EQ(narrow.Append(narrow.text()), 4);
    EXPECT_STREQ(narrow.text(), "\x80ta\x80ta");
    narrow.Assign("x");
    expectSound(narrow);
}

TEST(Strings, FileNames)
{
    wchar_t name[] = L"a:b/c?";
    MakeFileNameSafe(name);
    EXPECT_EQ(units(name), u"a.bbc$");
    EXPECT_EQ(units(cWCSFromMbs("*@\"'\\/:<>? |.", 1)), u"xaQQ$b.{}$ |.");
    MakeFileNameSafe(nullptr);
}

TEST(Strings, CodePageAndFlagsFollowTheVersion)
{
    struct
    {
        std::uint32_t platform, major, minor;
        std::int32_t codePage;
        int flags;
    } const versions[] = {{1, 4, 0, 0, 0},      {1, 4, 10, 0, 0},    {1, 4, 90, 65001, 0}, {1, 3, 10, 65001, 0},
                          {0, 4, 0, 65001, 0},  {2, 4, 0, 65001, 4}, {2, 5, 0, 65001, 4},  {2, 5, 1, 65001, 6},
                          {2, 6, 0, 65001, 6},  {2, 6, 3, 65001, 6}, {2, 7, 0, 65001, 7},  {2, 10, 0, 65001, 7},
                          {1, 10, 10, 65001, 0}};
    for (const auto& version : versions) {
        VersionRecord record;
        record.platform = version.platform;
        record.majorVersion = version.major;
        record.minorVersion = version.minor;
        const VersionFlags flags = flagsOf(record);
        EXPECT_EQ(codePageOf(record), version.codePage);
        EXPECT_EQ(flags.ntFamily * 4 + flags.nt51 * 2 + flags.ntAbove6, version.flags)
            << version.major << '.' << version.minor;
    }
    EXPECT_EQ(systemVersion().record.size, 276u);
    EXPECT_TRUE(systemVersion().flags.nt51);
    EXPECT_EQ(DefaultCodePage(), 65001);
}

TEST(Strings, ProgrammingErrorsAreReportedAndSkipped)
{
    const Recorder recorder;
    void* const missing = nullptr;
    SafeFree(static_cast<char**>(missing));
    EXPECT_EQ(Recorder::lines.back(), u"Assertion failed: false, file stringFuncs, line 146");
    static std::int32_t reported = 0;
    setAssertionReport([](const wchar_t* expression, const wchar_t* file, std::int32_t line) {
        EXPECT_EQ(units(expression) + units(file), u"falsestringFuncs");
        reported = line;
    });
    SafeFree(nullptr);
    EXPECT_EQ(reported, 146);
    EXPECT_EQ(Recorder::lines.size(), 1u);
    test::TestHeap heap;
    void* block = heap::allocate(10);
    SafeFree(&block);
    EXPECT_EQ(block, nullptr);
    SafeFree(&block);
}

#if defined(_WIN32)
TEST(Strings, SystemErrors)
{
    cWCStr text(L"before");
    const std::u16string shown = units(text.SystemErrorText(5));
    EXPECT_EQ(shown.substr(shown.size() - 6), u" (0x5)");
    EXPECT_NE(shown[shown.size() - 7], u'\n');
    EXPECT_GT(shown.size(), 10u);
    EXPECT_EQ(shown.find(u'\r'), shown.npos);
    SetLastError(2);
    EXPECT_NE(units(text.SystemErrorText(0xFFFFFFFF)).find(u" (0x2)"), shown.npos);
    // ERROR_MR_MID_NOT_FOUND for a code that has no message.
    EXPECT_EQ(units(text.SystemErrorText(0xDEAD0001)),
              u"FormatMessage error 317, Original error -559087615 (0xDEAD0001)");
    const std::uint32_t injected = test::forEachFailingAllocation([](test::TestHeap& heap) {
        const Recorder recorder;
        cWCS message;
        const std::u16string result = units(message.SystemErrorText(5));
        EXPECT_EQ(result == u"<NULL>", heap.failed());
        EXPECT_EQ(message.text() == nullptr, heap.failed());
    });
    EXPECT_GE(injected, 4u);
}
#endif

} // namespace
} // namespace toolbelt
