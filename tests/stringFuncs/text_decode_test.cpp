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
    const std::tuple<std::string_view, TextEncoding, std::u16string_view> cases[] = {
        {""sv, TextEncoding::multibyte, u""sv},
        {"\0"sv, TextEncoding::multibyte, u"\0"sv},
        {"\xFF\xFE"sv, TextEncoding::utf16le, u""sv},
        {"\xFE\xFF"sv, TextEncoding::utf16be, u""sv},
        {"\xEF\xBB\xBF"sv, TextEncoding::utf8, u""sv},
        {"\xEF\xBB\xBF\xC3\xA4\0b"sv, TextEncoding::utf8, u"ä\0b"sv},
        {"\xC3\xA4\xF0\x9F\x98\x80\r\n"sv, TextEncoding::multibyte, u"ä\U0001F600\r\n"sv},
        {"\xFF\xFE\xE4\0\0\0\x3D\xD8"sv, TextEncoding::utf16le, u"ä\0\xD83D"sv},
        {"\xFF\xFE\x41\0\x42"sv, TextEncoding::utf16le, u"A"sv}, // half a unit is dropped
        {"\xFE\xFF\0\xE4\x12\x34\x56"sv, TextEncoding::utf16be, u"ä\u1234"sv},
        {"\x41\0"sv, TextEncoding::utf16le, u"A"sv},
        {"\0\x41\x12\x34"sv, TextEncoding::utf16be, u"A\u1234"sv},
        {"\0\0\0\x41"sv, TextEncoding::utf16be, u"\0A"sv},
        {"\xFF\xFE\xFE\xFF"sv, TextEncoding::utf16le, u"\xFFFE"sv}, // one mark only
    };
    constexpr TextEncoding none{-1};
    for (const auto& [bytes, encoding, text] : cases)
        for (const std::size_t shift : {0, 1}) { // from a block of exactly this size, at an odd address too
            const std::unique_ptr<std::uint8_t[]> block(new std::uint8_t[bytes.size() + shift]);
            std::copy(bytes.begin(), bytes.end(), block.get() + shift);
            const std::uint32_t injected = forEachFailingAllocation([&](TestHeap& heap) {
                cWCS decoded;
                TextEncoding found = none;
                const bool done = decodeText(decoded, block.get() + shift, bytes.size(), &found);
                EXPECT_NE(done, heap.failed());
                EXPECT_EQ(decoded.text() != nullptr, done);
                EXPECT_EQ(found, done ? encoding : none) << testing::PrintToString(bytes);
                EXPECT_EQ(units(decoded), done ? text : u"") << testing::PrintToString(bytes);
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
    ASSERT_TRUE(buffer.Assign(L"four\nab\nfives\nq\nr"));
    using Read = std::pair<std::int32_t, std::u16string>;
    const Read reads[] = {{5, u"+four\0#"s}, {5, u"+ab\0\0\0#"s}, {5, u"+five\0#"s},
                          {1, u"+\0#####"s}, {0, u"+######"s},    {5, u"-\0\0\0\0\0#"s}};
    for (const auto& [size, expected] : reads) {
        wchar_t out[] = L"######";
        const bool found = buffer.Read(out, size);
        EXPECT_EQ((found ? u"+" : u"-") + units(out, 6), expected);
    }
}

TEST(StringBuffer, FindsTheLineOfAKey)
{
    const std::tuple<const wchar_t*, bool, const wchar_t*> cases[] = {
        {L"key=", false, L"key=secret"}, {L"key=", true, L"secret"}, {L"key=later", true, L""},
        {L"longer", false, nullptr},     {L"", false, L"Key=other"}, {nullptr, false, nullptr}};
    for (const auto& [key, skipKey, expected] : cases)
        forEachFailingAllocation([&](TestHeap& heap) {
            cStringBuffer buffer;
            cWCS result;
            buffer.Assign(L"Key=other\n key=no\r\nkey=secret\nkey=later\nlong");
            const bool found = buffer.FindValue(result, key, skipKey);
            EXPECT_EQ(found, expected && !heap.failed());
            EXPECT_EQ(result.text() != nullptr, found); // else as it was
            if (heap.failed()) return;
            EXPECT_EQ(units(result), units(expected));
            EXPECT_EQ(buffer.FindValue(result, key, skipKey), found); // from the beginning again
        });
}

} // namespace
} // namespace toolbelt::test
