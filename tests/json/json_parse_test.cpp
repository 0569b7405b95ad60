// Documents through json-parser into trees and out again.
#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "tests/json/trees.h"
#include "json/json_parse.h"

namespace toolbelt::test {
namespace {

struct Parsed
{
    JsonTree tree;
    std::string error;
};

Parsed parse(const std::string& document)
{
    char error[JSON_ERROR_SIZE] = "untouched";
    JsonTree tree(jsonParse(document.data(), static_cast<std::uint32_t>(document.size()), &error));
    return {std::move(tree), error};
}

std::string readFile(const std::string& name)
{
    std::ifstream file(TOOLBELT_VECTORS "json/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(JsonParse, GivesTheTreeThatTheTextTells)
{
    const Parsed settings = parse(readFile("settings.json"));
    ASSERT_NE(settings.tree, nullptr) << settings.error;
    const std::string expected = readFile("settings.expected");
    cWCS out;
    ASSERT_TRUE(jsonWrite(0, out, settings.tree.get()));
    std::string utf8(static_cast<std::size_t>(out.length()) * 3, '\0');
    utf8.resize(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, out.text(), out.length(), utf8.data(),
                                                             static_cast<int>(utf8.size()), nullptr, nullptr)));
    std::erase(utf8, '\r');
    EXPECT_EQ(utf8 + '\n', expected);

    const JsonValue& limits = *jsonFindMember(*settings.tree, "limits");
    EXPECT_EQ(limits.parent, settings.tree.get());
    EXPECT_EQ(limits.array.elements[3]->integer, INT64_MIN);
    EXPECT_EQ(limits.flags | limits.array.elements[0]->flags, 0u);
    EXPECT_EQ(written(parse("{\"n\\u0000m\":0}").tree.get()), std::string("{\n  \"n\0m\":0\n}", 13));
}

TEST(JsonParse, ReadsAsTheParserReadsAndSaysWhatItSays)
{
    // json-parser counts lines and no columns.
    const std::string zeros(400, '0');
    const std::pair<std::string, std::string> rows[] = {
        {"\xEF\xBB\xBF 1 \r\n", "1"},
        {"[1,]", "[\n  1\n]"},
        {std::string("[1]\0 2", 6), "[\n  1\n]"},
        {"\"\\q\x01\"", "\"q\x01\""},
        {"[18446744073709551616,-9223372036854775809,1.5,99999999999999999999]",
         "[\n  18446744073709551616,\n  -9223372036854775808,\n  1.5,\n  1e+20\n]"},
        {"{\"a\":1,\"a\":2}", "{\n  \"a\":1,\n  \"a\":2\n}"},
        {"1x", "1:0: Trailing garbage: `x`"},
        {"\n\n{\"a\":1 \"b\"", "3:0: Expected , before \""},
        {"\xC3", "1:0: Unexpected \xC3 when seeking value"},
        {"[01]", "1:0: Unexpected `0` before `1`"},
        // Refused beyond json-parser's own checks.
        {"\n[\"\\ud800\\u0041\"]", "Invalid character value `u` (at 2:0)"},
        {"{\"\\udc00\\ud800\":1}", "Invalid character value `u` (at 1:0)"},
        {"[1,\n1e400]", "2:0: Number out of range"},
        {"[1" + zeros + "]", "1:0: Number out of range"},
        {"[-]", "1:0: Expected digit after `-`"},
    };
    for (const auto& [document, expected] : rows) {
        const Parsed parsed = parse(document);
        EXPECT_EQ(parsed.tree ? written(parsed.tree.get()) : parsed.error, expected) << document;
    }
    EXPECT_EQ(parse("").tree, nullptr);
    EXPECT_EQ(jsonParse("[", 1), nullptr) << "the message is not asked for";
}

// Each prefix stands against memory that cannot be read.
TEST(JsonParse, ReadsNothingBehindTheText)
{
    auto* pages = static_cast<char*>(VirtualAlloc(nullptr, 8192, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    DWORD before = 0;
    ASSERT_TRUE(VirtualProtect(pages + 4096, 4096, PAGE_NOACCESS, &before));
    const std::string documents[] = {readFile("settings.json"), "true\n", "false\n", "null\n", "\"\\u0041\"\n",
                                     "\"\\ud83d\\ude00\"\n"};
    for (const std::string& document : documents) {
        for (std::size_t size = 0; size <= document.size(); ++size) {
            char* text = pages + 4096 - size;
            std::copy_n(document.data(), size, text);
            const JsonTree tree(jsonParse(text, static_cast<std::uint32_t>(size)));
            EXPECT_EQ(tree != nullptr, size + 1 >= document.size()) << size << " of " << document;
        }
    }
    VirtualFree(pages, 0, MEM_RELEASE);
}

TEST(JsonParse, TakesNoStackForDepth)
{
    constexpr std::uint32_t DEPTH = 200000;
    const std::string open(DEPTH, '['), closed(DEPTH, ']');
    const Parsed deep = parse(open + closed);
    EXPECT_EQ(written(deep.tree.get(), JSON_LEVEL_LIMIT), open + closed);
    EXPECT_EQ(written(deep.tree.get()), "false") << "its indentation passes the limit";
}

} // namespace
} // namespace toolbelt::test
