// The writer and the trees it reads: levels, limits, memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/json/trees.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {
namespace {

JsonValue* one()
{
    return jsonNewInteger(1);
}
JsonValue* unknown()
{
    JsonValue* value = jsonNew(JSON_NULL);
    value->type = 9;
    return value;
}

// Layout, flags and escapes of what a document can hold are tested by the tool's tests.
TEST(JsonWrite, LaysOutByItsLevelAndWhatNoDocumentHolds)
{
    struct Case
    {
        JsonValue* value;
        const char* expected;
        std::uint32_t level = 0;
        bool valid = true;
    };
    const Case cases[] = {
        {jsonNew(JSON_OBJECT), "{\n    }", 2},
        {array({array({}), object({})}), "[\n    [\n    ],\n    {\n    }\n  ]", 1},
        // No lines at the deepest levels, and the last one that has them.
        {array({one(), object({{"a", one()}})}), "[1,{\"a\":1}]", 65536},
        {object({{"a\"", flagged(JSON_BLANK, one())}, {"b", flagged(JSON_HIDDEN, one())}, {"c", text("\x80")}}),
         "{\n  \"a\\\"\":,\n  \"c\":\"<fffd>\"\n}"},
        // A bad child does not stop the walk, nor make its container fail.
        {array({unknown(), jsonNew(JSON_NONE), one()}), "[\n  <error>,\n  ,\n  1\n]"},
        {unknown(), "<error>", 0, false},
        {jsonNew(JSON_NONE), "", 0, false},
        {nullptr, "", 0, false},
    };
    for (const Case& row : cases) {
        const JsonTree tree(row.value);
        cWCS out;
        EXPECT_EQ(jsonWrite(row.level, out, tree.get()), row.valid) << row.expected;
        EXPECT_EQ(shown(out), row.expected);
    }
}

TEST(JsonWrite, OffersItsParts)
{
    cWCS out, scratch;
    ASSERT_NE(out.Append(L"x"), 0);
    EXPECT_TRUE(jsonAppendText(L"a\"b", out, true, true));
    EXPECT_TRUE(jsonAppendText(L"a\"b", out, false, false));
    EXPECT_TRUE(jsonAppendText(L"\tbc", out, true, false, 2) && jsonAppendText(L"\t", out, false, true));
    EXPECT_TRUE(jsonAppendText(nullptr, out, true, true, 3));
    EXPECT_EQ(shown(out), "x\"a\\\"b\"a\"b\"\tb\"\\t\"\"");
    while (out.length() + 1 < out.capacity()) out.Append(L"y");
    cWCS twice;
    EXPECT_TRUE(jsonAppendText(out.text(), twice, true, false) && jsonAppendText(out.text(), out, true, false));
    EXPECT_EQ(shown(out), shown(out).substr(0, shown(out).find("y\"") + 1) + shown(twice)) << "from within, moved";
    const wchar_t* const escaped = jsonEscape(scratch, L"'\\'");
    EXPECT_EQ(escaped, scratch.text());
    EXPECT_EQ(shown(scratch), "'\\\\'");
    for (const auto& [level, units] : {std::pair(0u, 2), {3u, 8}, {65535u, 131072}, {65536u, 0}, {0xFFFFFFFFu, 0}}) {
        cWCS line;
        EXPECT_TRUE(jsonNewLine(level, line));
        EXPECT_EQ(line.length(), units);
        EXPECT_EQ(shown(line), units ? "\n" + std::string(static_cast<std::size_t>(units) - 2, ' ') : "");
    }
}

TEST(JsonWrite, TakesNoStackForDepthAndRefusesWhatIsTooLong)
{
    constexpr std::uint32_t DEPTH = 200000;
    JsonTree deep(array({}));
    for (std::uint32_t i = 1; i < DEPTH; ++i) deep.reset(array({deep.release()}));
    EXPECT_EQ(written(deep.get(), JSON_LEVEL_LIMIT), std::string(DEPTH, '[') + std::string(DEPTH, ']'));
    cWCS out;
    ASSERT_NE(out.Append(L"kept"), 0);
    // Hardly any value, but lines of 131,074 units.
    JsonValue null;
    null.type = JSON_NULL;
    std::vector<JsonValue*> many(4096, &null);
    JsonValue wide;
    wide.type = JSON_ARRAY;
    wide.array = {4096, many.data()};
    char byte = 'x';
    JsonValue hugeString;
    hugeString.type = JSON_STRING;
    hugeString.string = {0xFFFFFFFF, &byte};
    TestHeap heap;
    EXPECT_FALSE(jsonWrite(JSON_LEVEL_LIMIT - 2, out, &wide));
    EXPECT_FALSE(jsonWrite(0, out, &hugeString));
    EXPECT_EQ(heap.allocations(), 0u);
    EXPECT_EQ(shown(out), "kept");
}

TEST(JsonWrite, ReservesOnceAndWipesAll)
{
    TestHeap heap;
    {
        const JsonTree tree(array({}));
        std::string expected = "[";
        for (std::uint32_t i = 0; i < 20000; ++i) {
            jsonAddElement(*tree, text("\xC3\xA4\"" + std::to_string(i)));
            expected += (i ? ",\n  \"<e4>\\\"" : "\n  \"<e4>\\\"") + std::to_string(i) + '"';
        }
        const std::uint32_t before = heap.allocations();
        EXPECT_EQ(written(tree.get()), expected + "\n]");
        EXPECT_EQ(heap.allocations() - before, 3u) << "the text, and two scratch buffers";
        jsonFree(std::exchange(tree->array.elements[5], nullptr));
    }
    EXPECT_EQ(heap.held(), 0u);
    EXPECT_EQ(heap.secretsReleased(), heap.allocations());
}

TEST(JsonWrite, FreesWhatCannotBeAddedAndFindsMembers)
{
    // The container stays as it was.
    TestHeap heap;
    const JsonTree list(array({one()}));
    EXPECT_FALSE(jsonAddElement(*list, nullptr));
    EXPECT_FALSE(jsonAddMember(*list, "a", 1, one()));
    EXPECT_EQ(list->array.count, 1u);
    const JsonTree names(object({{"a", one()}, {"ab", text("x")}, {"a", jsonNew(JSON_NULL)}}));
    EXPECT_EQ(jsonFindMember(*names, "a")->type, JSON_INTEGER);
    EXPECT_EQ(jsonFindMember(*names, "abc", 2)->parent, names.get());
    EXPECT_EQ(jsonFindMember(*names, "b"), nullptr);
}

} // namespace
} // namespace toolbelt::test
