// toolbelt.exe post from outside, to the server that with_server.py runs beside this program.
#include <gtest/gtest.h>

#include <cstdlib>

#include "net/post_json.h"
#include "tests/cli/process.h"

namespace toolbelt::test {
namespace {

TEST(PostTool, PrintsTheAnswerAndSaysWhatWentWrong)
{
    // The first post of a session under Wine starts a process of the desktop. A child's would inherit the child's pipes
    // and never close them; so it is started from here.
    cByteBuffer unused;
    ASSERT_EQ(postJson(unused, "{}", L"localhost", L"echo",
                       static_cast<std::uint32_t>(std::atoi(std::getenv("TOOLBELT_TEST_PORTS"))), 0),
              STATUS_OK);
    const Scratch scratch;
    const std::string item = scratch.write("item.json", "{\"name\": \"\xC3\xA4\"}");
    const std::string server = "http://localhost:" + std::to_string(std::atoi(std::getenv("TOOLBELT_TEST_PORTS")));
    const std::string answer = "{\"method\":\"POST\",\"path\":\"/json\",\"received\":{\"name\": \"\xC3\xA4\"}}";
    const Outcome posted = run({"post", server + "/json", item});
    EXPECT_EQ(posted.exitCode, 0);
    EXPECT_EQ(posted.out, answer);
    EXPECT_EQ(posted.err, "");
    EXPECT_EQ(run({"post", server + "/json", "-"}, "{\"name\": \"\xC3\xA4\"}").out, answer);
    EXPECT_NE(run({"--json", "post", server + "/json", item}).out.find("\"answer\":\"{\\\"method\\\":"),
              std::string::npos);

    const struct
    {
        std::string url, file;
        int exitCode;
        std::string message;
    } rows[] = {
        {"ftp://localhost/", item, 2, "toolbelt: ftp://localhost/: not a URL"},
        {server + "/json", scratch.path("missing"), 3, "toolbelt: " + scratch.path("missing")},
        {server + "/json", scratch.write("zero", std::string("{}\0{}", 5)), 3, "toolbelt: "},
        {server + "/close", item, 4, "toolbelt: " + server + "/close: "},
        {"http://localhost:1/", item, 4,
         "toolbelt: http://localhost:1/: the document could not be sent, system error 12029 (status 4)"},
    };
    for (const auto& row : rows) {
        const Outcome outcome = run({"post", row.url, row.file});
        EXPECT_EQ(outcome.exitCode, row.exitCode) << row.url;
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err.find(row.message), 0u) << outcome.err;
    }
}

} // namespace
} // namespace toolbelt::test
