// text show and text find.
#include <gtest/gtest.h>

#include "tests/cli/process.h"

namespace toolbelt::test {
namespace {

using namespace std::literals;

TEST(Text, ShowsFilesOfAnyEncodingAsUtf8)
{
    struct Case
    {
        std::string bytes, out, encoding;
    };
    const Case cases[] = {
        {"", "", "UTF-8"},
        {"a\r\n\xC3\xA4\xF0\x9F\x98\x80\n", "a\r\n\xC3\xA4\xF0\x9F\x98\x80\n", "UTF-8"},
        {"\xEF\xBB\xBF\xE6\xBC\xA2", "\xE6\xBC\xA2", "UTF-8, with a mark"},
        {"\xFF\xFE\xE4\0\x3D\xD8\0\xDE\x3D\xD8"s, "\xC3\xA4\xF0\x9F\x98\x80\xEF\xBF\xBD", "UTF-16, little-endian"},
        {"\0a\x6F\x22"s, "a\xE6\xBC\xA2", "UTF-16, big-endian"},
        // Where the output is cut into pieces, a pair must not be.
        {std::string((1 << 20) - 1, 'x') + "\xF0\x9F\x98\x80", std::string((1 << 20) - 1, 'x') + "\xF0\x9F\x98\x80",
         "UTF-8"},
    };
    const Scratch scratch;
    for (const Case& c : cases) {
        const bool stream = c.bytes.size() % 2 == 1;
        const Outcome shown = stream ? run({"text", "show", "-"}, c.bytes)
                                     : run({"text", "show", scratch.write("\xE6\xBC\xA2", c.bytes)});
        EXPECT_EQ(shown.exitCode, 0);
        EXPECT_TRUE(shown.out == c.out) << shown.out.substr(0, 100);
        EXPECT_EQ(shown.err, "encoding: " + c.encoding + "\n");
    }
    const std::string missing = scratch.path("missing");
    for (const Arguments& arguments : {Arguments{"text", "show", missing}, {"text", "find", missing, "k"}}) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, 3);
        EXPECT_EQ(outcome.out, "");
        EXPECT_TRUE(outcome.err.starts_with("toolbelt: " + missing + ": cannot be read: ")) << outcome.err;
        EXPECT_TRUE(outcome.err.ends_with(" (status 2)\n")) << outcome.err;
    }
}

TEST(Text, FindsTheLineOfAKey)
{
    const Scratch scratch;
    const std::string file = scratch.write("\xC3\xA4.ini", "\xFF\xFE\xE4\0=\0v\0\r\0\n\0\xE4\0=\0w\0\x01\0\n\0"s);
    EXPECT_EQ(run({"text", "find", file, "\xC3\xA4="}).out, "\xC3\xA4=v\n");
    EXPECT_EQ(run({"text", "find", "--skip-key", file, "\xC3\xA4="}).out, "v\n");
    EXPECT_EQ(run({"text", "find", "--skip-key", file, "\xC3\xA4=w"}).out, "\x01\n");
    const Outcome none = run({"text", "find", file, "v"});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_EQ(none.out + none.err, "");
    EXPECT_EQ(run({"text", "find", file}).exitCode, 2);
    const std::string json =
        run({"--json", "text", "find", file, "\xC3\xA4="}).out + run({"--json", "text", "show", file}).out;
    for (const std::string part :
         {"\"line\":\"\xC3\xA4=v\"", "\"encoding\":\"UTF-16, little-endian\"", "=v\\r\\n", "=w\xE2\x90\x81\\n"})
        EXPECT_NE(json.find(part), std::string::npos) << json;
}

} // namespace
} // namespace toolbelt::test
