// Bytes of text files to texts, and texts to lines.
#include "Includes/stringFuncs/text_decode.h"

#include <memory>

#include "Includes/stringFuncs/string_buffer.h"
#include "tests/stringFuncs/text_support.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {
namespace {

using namespace std::literals;

TEST(TextDecode, RecognisesAndDecodes)
{
    struct Case
    {
        std::string_view bytes;
        TextEncoding encoding;
        std::u16string_view text;
    };
    const Case cases[] = {
        {""sv, TextEncoding::multibyte, u""sv},
        {"A"sv, TextEncoding::multibyte, u"A"sv},
        {"\0"sv, TextEncoding::multibyte, u"\0"sv},
        {"\xFF\xFE"sv, TextEncoding::utf16le, u""sv},
        {"\xFE\xFF"sv, TextEncoding::utf16be, u""sv},
        {"\xEF\xBB\xBF"sv, TextEncoding::utf8, u""sv},
        {"\xEF\xBB\xBF\xC3\xA4\0b"sv, TextEncoding::utf8, u"ä\0b"sv},
        {"\xC3\xA4\xF0\x9F\x98\x80\r\n"sv, TextEncoding::multibyte, u"ä\U0001F600\r\n"sv},
        {"abc\0d"sv, TextEncoding::multibyte, u"abc\0d"sv},
        {"\xFF\xFE\xE4\0\0\0\x3D\xD8"sv, TextEncoding::utf16le, u"ä\0\xD83D"sv},
        {"\xFF\xFE\x41\0\x42"sv, TextEncoding::utf16le, u"A"sv}, // half a unit is dropped
        {"\xFE\xFF\0\xE4\x12\x34\x56"sv, TextEncoding::utf16be, u"ä\u1234"sv},
        {"\x41\0"sv, TextEncoding::utf16le, u"A"sv},
        {"\x41\0\x42"sv, TextEncoding::utf16le, u"A"sv},
        {"\0\x41\x12\x34"sv, TextEncoding::utf16be, u"A\u1234"sv},
        {"\0\0\0\x41"sv, TextEncoding::utf16be, u"\0A"sv},
        {"\xFF\xFE\xFE\xFF"sv, TextEncoding::utf16le, u"\xFFFE"sv}, // one mark only
    };
    for (const Case& c : cases) {
        // From a block of exactly this size, at an odd address too.
        for (const std::size_t shift : {0, 1}) {
            const std::unique_ptr<std::uint8_t[]> block(new std::uint8_t[c.bytes.size() + shift]);
            std::copy(c.bytes.begin(), c.bytes.end(), block.get() + shift);
            cWCS text;
            TextEncoding encoding{};
            ASSERT_TRUE(decodeText(text, block.get() + shift, c.bytes.size(), &encoding));
            EXPECT_EQ(encoding, c.encoding) << testing::PrintToString(c.bytes);
            EXPECT_EQ(units(text), c.text) << testing::PrintToString(c.bytes);
            EXPECT_NE(text.text(), nullptr);
        }
        const std::uint32_t injected = forEachFailingAllocation([&](TestHeap& heap) {
            cWCS text;
            TextEncoding encoding{};
            const bool done =
                decodeText(text, reinterpret_cast<const std::uint8_t*>(c.bytes.data()), c.bytes.size(), &encoding);
            EXPECT_NE(done, heap.failed());
            EXPECT_EQ(text.text() != nullptr, done);
        });
        EXPECT_GT(injected, 0u);
    }
}

TEST(StringBuffer, ReadsLinesOfEveryKind)
{
    const std::u16string text = u"one\r\n\ntwo\rthree\r\r\nfo\0ur\n\r\nlast"s;
    for (const std::u16string& end : {u""s, u"\n"s, u"\r"s, u"\r\n"s}) { // with or without an end, no line more
        cStringBuffer lines;
        ASSERT_TRUE(lines.Assign(wide(text + end), static_cast<std::int32_t>((text + end).size())));
        std::u16string all;
        const wchar_t* line;
        for (std::int32_t length; lines.ReadLine(&line, &length);) all += units(line, length) + u"|";
        EXPECT_EQ(all, u"one||two|three||fo\0ur||last|"s);
    }
    cStringBuffer buffer;
    wchar_t out[6];
    const auto read = [&](std::int32_t size) {
        std::fill(out, out + 6, L'#');
        const bool found = buffer.Read(out, size);
        return std::u16string(found ? u"+" : u"-") + units(out, 6);
    };
    EXPECT_EQ(read(5), u"-\0\0\0\0\0#"s); // nothing read yet: no text at all
    ASSERT_TRUE(buffer.Assign(L"four\nab\nfives\nq\nr"));
    EXPECT_EQ(read(5), u"+four\0#"s);
    EXPECT_EQ(read(5), u"+ab\0\0\0#"s);
    EXPECT_EQ(read(5), u"+five\0#"s);
    EXPECT_EQ(read(1), u"+\0#####"s);
    EXPECT_EQ(read(0), u"+######"s);
    EXPECT_EQ(read(5), u"-\0\0\0\0\0#"s);
}

TEST(StringBuffer, FindsTheLineOfAKey)
{
    const auto find = [](const wchar_t* key, bool skipKey) {
        cStringBuffer buffer;
        EXPECT_TRUE(buffer.Assign(L"Key=other\n key=no\r\nkey=value\nkey=later\nlong"));
        cWCStr result(L"as it was");
        const bool found = buffer.FindValue(result, key, skipKey);
        EXPECT_EQ(buffer.FindValue(result, key, skipKey), found); // from the beginning again
        return units(result);
    };
    EXPECT_EQ(find(L"key=", false), u"key=value");
    EXPECT_EQ(find(L"key=", true), u"value");
    EXPECT_EQ(find(L"key=later", true), u"");
    EXPECT_EQ(find(L"longer", false), u"as it was");
    EXPECT_EQ(find(L"", false), u"Key=other");
    EXPECT_EQ(find(nullptr, false), u"as it was");
    forEachFailingAllocation([](TestHeap& heap) {
        cStringBuffer buffer;
        cWCS text, result;
        const bool read = text.Append(L"a=secret") && buffer.Assign(L"b=") && (buffer.Swap(text), true);
        const bool found = buffer.FindValue(result, L"a=", true);
        EXPECT_EQ(read && found, !heap.failed());
        EXPECT_EQ(units(result), found ? u"secret" : u"");
    });
}

} // namespace
} // namespace toolbelt::test
