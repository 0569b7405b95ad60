// The URL splitter: pieces, ports, hostile texts and memory.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "net/split_url.h"
#include "tests/support/vectors.h"

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
    UrlParts used; // the same record over and over
    const auto cut = [&used](const std::string& url) { return describe(splitUrl(used, exactly(url).get()), used); };
    for (const test::Record& record : test::readVectors("../net/urls.txt")) {
        EXPECT_EQ(cut(record.get("url")), record.get("parts")) << record.where;
        EXPECT_TRUE(record.unread().empty()) << record.where;
    }
    EXPECT_EQ(cut(" \t http://h"), "h|-|0|0");
    EXPECT_EQ(cut("\nhttp://h"), "no");
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
