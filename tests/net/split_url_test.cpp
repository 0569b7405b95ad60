// The URL splitter: pieces, ports, hostile texts and memory.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "net/split_url.h"

namespace toolbelt {
namespace {

// A block of exactly the text and its terminator.
std::unique_ptr<wchar_t[]> exactly(const std::string& text)
{
    auto block = std::make_unique<wchar_t[]>(text.size() + 1);
    for (std::size_t i = 0; i < text.size(); ++i) block[i] = static_cast<wchar_t>(text[i]);
    return block;
}

// "host|path|port|secure", "-" for a null path; "no" when it cannot be split.
std::string describe(bool done, const UrlParts& parts)
{
    if (!done) return parts.host || parts.path || parts.port || parts.secure ? "no, with pieces" : "no";
    const auto narrow = [](const wchar_t* text) {
        std::string result;
        for (; *text; ++text) result += static_cast<char>(*text);
        return result;
    };
    return narrow(parts.host) + "|" + (parts.path ? narrow(parts.path) : "-") + "|" + std::to_string(parts.port) + "|" +
           std::to_string(parts.secure);
}

TEST(SplitUrl, CutsUrlsIntoPieces)
{
    const struct
    {
        const char *url, *wanted;
    } rows[] = {
        {"https://h:8443/api/items", "h|api/items|8443|1"},
        {"http://h", "h|-|0|0"},
        {"http://h//a", "h|/a|0|0"},
        {" \t HtTpS://Host.Example/a?b=c#d", "Host.Example|a?b=c#d|0|1"},
        {"http://h/a:8", "h/a|-|8|0"}, // the colon is looked for first
        {"http://h/a:8/b:9/c", "h/a|b:9/c|8|0"},
        {"http://h:/x", "h|x|0|0"},
        {"http://h: +80x/y", "h|y|80|0"},
        {"http://h:99999999999999999999999/", "h||2147483647|0"},
        {"http://h:-1", "h|-|4294967295|0"},
        {"http://h:-99999999999999999999999", "h|-|2147483648|0"},
        {"https://:/", "||0|1"},
        {"", "no"},
        {"https:/h", "no"},
        {"httpss://h", "no"},
        {"\nhttp://h", "no"},
        {"h:80/x", "no"},
    };
    UrlParts used; // the same record over and over
    for (const auto& row : rows) {
        const bool done = splitUrl(used, exactly(row.url).get());
        EXPECT_EQ(describe(done, used), row.wanted) << row.url;
    }
    // A piece may be split into the record it lies in.
    ASSERT_TRUE(splitUrl(used, exactly("http://a:1/https://b:7/c").get()));
    EXPECT_EQ(describe(splitUrl(used, used.path), used), "b|c|7|1");
    EXPECT_FALSE(splitUrl(used, nullptr));
    // A letter that only looks like a match when its upper half is dropped, or folded by an alphabet other than ASCII.
    auto odd = exactly("https://h");
    odd[4] = 0x17F; // a long s
    EXPECT_FALSE(splitUrl(used, odd.get()));
    odd[4] = 0x173;
    EXPECT_FALSE(splitUrl(used, odd.get()));
}

} // namespace
} // namespace toolbelt
