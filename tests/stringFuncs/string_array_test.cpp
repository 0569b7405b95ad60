// cStringArrayT, and the long form of paths.
#include "Includes/stringFuncs/string_array.h"

#include <cstring>

#include "Includes/stringFuncs/diagnostics.h"
#include "Includes/stringFuncs/long_name.h"
#include "tests/stringFuncs/text_support.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {
namespace {

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
    std::int32_t index = -7;
    EXPECT_EQ(array.Add(L"abc"), 1);
    EXPECT_EQ(array.AddCopy(L"defgh", 3, false, &index), 2);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(array.AddCopy(L"abc"), 3);
    EXPECT_EQ(array.AddCopy(L"x\0secret", 8), 4); // a zero unit ends an item: nothing is kept that no wipe would reach
    wchar_t* const owned = cStringArrayT::AllocateText(2048);
    for (int i = 0; i < 4096; ++i) ASSERT_EQ(owned[i], 0) << i;
    owned[0] = L'o';
    EXPECT_EQ(array.AddOwned(owned, &index), 5);
    EXPECT_EQ(array.item(index), owned);
    EXPECT_EQ(all(array), u"abc|def|abc|x|o");

    EXPECT_EQ(array.Find(L"abc"), 2); // from the last to the first
    EXPECT_EQ(array.Find(L"abX", 2), 2);
    EXPECT_EQ(array.Find(L"abcd") + array.Find(L"ABC"), -2);
    EXPECT_EQ(array.AddUnique(L"ab", -1, &index), 0); // a mere beginning counts as equal
    EXPECT_EQ(index, 2);
    EXPECT_EQ(array.AddUnique(L"abcd", 4, &index), 6);
    EXPECT_EQ(index, 5);
    EXPECT_EQ(array.Add(nullptr) + array.AddUnique(nullptr) + array.AddOwned(nullptr), 0);

    for (const std::int32_t none : {-1, 6, INT32_MIN}) EXPECT_FALSE(array.RemoveAt(none) || array.item(none));
    EXPECT_TRUE(array.RemoveAt(1) && array.RemoveAt(4) && array.RemoveAt(0));
    EXPECT_EQ(all(array), u"abc|x|o");
    EXPECT_EQ(heap.secretsReleased(), 3u); // each was zero from end to end
    array.RemoveAll();
    EXPECT_EQ(heap.held(), 0u);
    EXPECT_EQ(array.Add(L"again"), 1); // for the destructor
}

TEST(StringArray, EndsQuotedLists)
{
    cStringArrayT array;
    array.AddCopy(L"\"a\\0b\"tail", 6, true);
    array.AddCopy(L"x\\0y\"", -1, true);
    array.AddCopy(L"\\0y\\0z\"", -1, true);
    EXPECT_EQ(all(array), u"\"a\\0b\\0\"|x\\0y\\0\"|\\0y\\0z\\0\"");
    // Not one with a separator in front of everything alone, with its end, without a closing quote, without separators.
    for (const std::u16string same :
         {u"\\0y\"", u"\"a\\0\"", u"\"a\\0b", u"\"a\\1b\"", u"\\0\"", u"\"\"", u"\"", u""}) {
        array.AddCopy(wide(same), -1, true);
        EXPECT_EQ(units(array.item(array.count() - 1)), same);
    }
    // Where only the two units more do not fit the block; and not when it was not asked for.
    std::u16string list = u"\"a\\0" + std::u16string(2042, u'b') + u"\"";
    array.AddCopy(wide(list), -1, true);
    array.AddCopy(wide(list));
    EXPECT_EQ(units(array.item(array.count() - 1)), list);
    EXPECT_EQ(units(array.item(array.count() - 2)), list.insert(list.size() - 1, u"\\0"));
}

int messages;

TEST(StringArray, IsEmptiedOrKeptWhenMemoryRunsOut)
{
    const DebugChannel before = setDebugChannel(
        [](const wchar_t* message) { messages += units(message) == u"Assertion! Error in memory allocation!"; });
    {
        TestHeap heap;
        cStringArrayT array;
        std::int32_t index = -7;
        array.Add(L"a");
        array.Add(L"b");
        heap.failAt(2); // the copy is made, the array cannot grow
        EXPECT_EQ(array.AddUnique(L"secret", -1, &index), 0);
        EXPECT_EQ(all(array), u"a|b");
        EXPECT_EQ(index, 2);
        EXPECT_EQ(heap.secretsReleased(), 1u);
        wchar_t* const owned = cStringArrayT::AllocateText(1);
        heap.failAt(1);
        EXPECT_EQ(array.AddOwned(owned), 0); // still the caller's
        EXPECT_EQ(array.AddOwned(owned), 3);
        heap.failAt(1); // no copy
        EXPECT_EQ(array.Add(L"c"), 0);
        EXPECT_EQ(array.count(), 0);
        EXPECT_EQ(heap.held(), 0u);
        EXPECT_EQ(messages, 3);
    }
    setDebugChannel(before);
}

TEST(LongName, PrefixesDrivePathsFrom260Units)
{
    const auto convert = [](const std::u16string& begin, std::size_t size) {
        cLongName name;
        const std::u16string path = begin + std::u16string(size - begin.size(), u'x');
        const std::u16string converted = units(name.Convert(wide(path)));
        return converted == path ? u"same" : converted == u"\\\\?\\" + path ? u"long" : converted;
    };
    EXPECT_EQ(convert(u"C:\\", 259), u"same");
    EXPECT_EQ(convert(u"C:\\", 260), u"long");
    for (const std::u16string begin : {u"\\\\server\\", u"C:/", u"C"}) EXPECT_EQ(convert(begin, 300), u"same");
    EXPECT_EQ(convert(u"C:", 2), u"same");
    const std::u16string path = u"C:\\" + std::u16string(3000, u'x');
    forEachFailingAllocation([&](TestHeap& heap) {
        cLongName name;
        const bool converted = name.Convert(wide(path)) != nullptr;
        EXPECT_NE(converted, heap.failed());
        EXPECT_EQ(name.Convert(nullptr), nullptr);
    });
}

} // namespace
} // namespace toolbelt::test
