// cStringArrayT, and the long form of paths.
#include "Includes/stringFuncs/string_array.h"

#include <cstring>

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
        forEachFailingAllocation([&](TestHeap& heap) {
            cLongName name;
            const std::u16string converted = units(name.Convert(wide(path)));
            EXPECT_EQ(converted, heap.failed() ? u"" : prefix + path);
            EXPECT_EQ(name.Convert(nullptr), nullptr);
        });
    }
}

} // namespace
} // namespace toolbelt::test
