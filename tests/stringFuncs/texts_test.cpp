// Bytes of text files to texts, texts to lines, arrays of texts, and the long form of paths.
#include "Includes/stringFuncs/text_decode.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "Includes/stringFuncs/long_name.h"
#include "Includes/stringFuncs/string_array.h"
#include "Includes/stringFuncs/string_buffer.h"
#include "tests/stringFuncs/text_support.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {
namespace {

using namespace std::literals;

// What bytes are is tested against a model; here that they may lie at any address.
TEST(TextDecode, TakesUnitsAtOddAddresses)
{
    const std::string_view bytes = "-\xFE\xFF\0\xE4\x12\x34\x56"sv; // half a unit is dropped
    const std::unique_ptr<char[]> block(new char[bytes.size()]);
    bytes.copy(block.get(), bytes.size());
    cWCS decoded;
    TextEncoding found{-1};
    EXPECT_TRUE(decodeText(decoded, reinterpret_cast<std::uint8_t*>(block.get()) + 1, bytes.size() - 1, &found));
    EXPECT_EQ(found, TextEncoding::utf16be);
    EXPECT_EQ(units(decoded), u"\u00E4\u1234");
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
    cWCS result; // lines of keys are found by the tool's tests
    EXPECT_FALSE(buffer.FindValue(result, nullptr, false));
    EXPECT_EQ(result.text(), nullptr);
}

std::u16string all(const cStringArrayT& array)
{
    std::u16string texts;
    for (std::int32_t i = 0; i < array.count(); ++i) texts += (i ? u"|" : u"") + units(array.item(i));
    return texts;
}

TEST(StringArray, AddsFindsAndRemoves)
{
    const auto isSlot = [](std::uintptr_t slot, auto function) { // such a pointer holds its slot's place, plus one
        std::uintptr_t place;
        std::memcpy(&place, &function, sizeof place);
        return place == slot * sizeof(void*) + 1;
    };
    using A = cStringArrayT;
    EXPECT_TRUE(isSlot(0, &A::RemoveAll) && isSlot(1, &A::Add) && isSlot(2, &A::AddCopy) && isSlot(3, &A::AddUnique) &&
                isSlot(4, &A::AddOwned) && isSlot(5, &A::RemoveAt));

    const TestHeap heap;
    cStringArrayT array;
    std::int32_t index[4] = {-7, -7, -7, -7};
    wchar_t* const owned = cStringArrayT::AllocateText(2048);
    EXPECT_EQ(units(owned, 4096), std::u16string(4096, u'\0'));
    owned[0] = L'o';
    EXPECT_EQ(array.Add(L"abc"), 1);
    EXPECT_EQ(array.AddCopy(L"defgh", 3, false, &index[0]), 2);
    EXPECT_EQ(array.AddCopy(L"abc"), 3);
    EXPECT_EQ(array.AddCopy(L"x\0secret", 8), 4); // a zero unit ends an item: nothing is kept that no wipe would reach
    EXPECT_EQ(array.AddOwned(owned, &index[1]), 5);
    EXPECT_EQ(array.item(4), owned);
    EXPECT_EQ(array.Find(L"abX", 2), 2); // from the last to the first
    EXPECT_EQ(array.Find(L"abcd") + array.Find(L"ABC"), -2);
    EXPECT_EQ(array.AddUnique(L"ab", -1, &index[2]), 0); // a mere beginning counts as equal
    EXPECT_EQ(array.AddUnique(L"abcd", 4, &index[3]), 6);
    EXPECT_EQ(std::vector(index, index + 4), (std::vector<std::int32_t>{1, 4, 2, 5}));
    EXPECT_EQ(array.Add(nullptr) + array.AddUnique(nullptr) + array.AddOwned(nullptr), 0);
    EXPECT_EQ(all(array), u"abc|def|abc|x|o|abcd");

    for (const std::int32_t none : {-1, 6, INT32_MIN}) EXPECT_FALSE(array.RemoveAt(none) || array.item(none));
    EXPECT_TRUE(array.RemoveAt(1) && array.RemoveAt(4) && array.RemoveAt(0));
    EXPECT_EQ(all(array), u"abc|x|o");
    EXPECT_EQ(heap.secretsReleased(), 3u); // each was zero from end to end
    array.RemoveAll();
    EXPECT_EQ(heap.held(), 0u);
    array.Add(L"again"); // for the destructor
}

TEST(StringArray, EndsQuotedLists)
{
    // Not those with a separator only in front of everything, with their end, without a closing quote or separators.
    std::vector<std::u16string> lists = {u"\\0y\"", u"\"a\\0\"", u"\"a\\0b", u"\"a\\1b\"",
                                         u"\\0\"",  u"\"\"",     u"\"",      u""};
    const std::size_t complete = lists.size();
    // The last is one where only the two units more do not fit the block.
    for (const std::u16string list : {u"\"a\\0b", u"x\\0y", u"\\0y\\0z"}) lists.push_back(list + u'"');
    lists.push_back(u"\"a\\0" + std::u16string(2042, u'b') + u'"');
    for (std::size_t i = 0; i < lists.size(); ++i) {
        cStringArrayT array;
        std::u16string list = lists[i];
        array.AddCopy(wide(list)); // not asked for
        array.AddCopy(wide(list + u"tail"), static_cast<std::int32_t>(list.size()), true);
        EXPECT_EQ(units(array.item(0)), list);
        EXPECT_EQ(units(array.item(1)), i < complete ? list : list.insert(list.size() - 1, u"\\0"));
    }
}

TEST(LongName, PrefixesDrivePathsFrom260Units)
{
    const std::tuple<std::u16string, std::size_t, std::u16string> cases[] = {
        {u"C:\\", 259, u""},    {u"C:\\", 260, u"\\\\?\\"}, {u"C:\\", 3000, u"\\\\?\\"},
        {u"\\\\s\\", 300, u""}, {u"C:/", 300, u""},         {u"C", 300, u""},
        {u"C:", 2, u""}};
    for (const auto& [begin, size, prefix] : cases) {
        const std::u16string path = begin + std::u16string(size - begin.size(), u'x');
        cLongName name;
        EXPECT_EQ(units(name.Convert(wide(path))), prefix + path);
        EXPECT_EQ(name.Convert(nullptr), nullptr);
    }
}

} // namespace
} // namespace toolbelt::test
