// json format, and --json before a command.
#include <gtest/gtest.h>

#include "tests/cli/process.h"

namespace toolbelt::test {
namespace {

TEST(Json, FormatsHidesAndBlanks)
{
    const std::string document = "{\"a\":[1,{\"b/c\":\"\\u00e4'\",\"~\":2.50}],\"\":true,\"d\":7}";
    struct Case
    {
        Arguments options;
        std::string expected;
    };
    const Case cases[] = {
        {{},
         "{\n  \"a\":[\n    1,\n    {\n      \"b/c\":\"\xC3\xA4'\",\n      \"~\":2.5\n    }\n  ],\n  \"\":true,\n  "
         "\"d\":7\n}\n"},
        {{"--hide", "/a/0", "--hide", "/a/1/~0", "--blank", "/a/1/b~1c", "--hide", "/", "--blank", "/d"},
         "{\n  \"a\":[\n    {\n      \"b/c\":\"\"\n    }\n  ],\n  \"d\":\n}\n"},
        {{"--blank", ""}, "{\n}\n"},
    };
    for (const Case& row : cases) {
        Outcome outcome = run(Arguments{"json", "format"} + row.options + Arguments{"-"}, document);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        std::erase(outcome.out, '\r');
        EXPECT_EQ(outcome.out, row.expected);
    }
    const std::pair<Arguments, int> refused[] = {{{"--hide", "a", "-"}, 2},    {{"--hide", "/a~2", "-"}, 2},
                                                 {{"--hide", "/a/2", "-"}, 3}, {{"--hide", "/a/00", "-"}, 3},
                                                 {{"--blank", "/x", "-"}, 3},  {{"--blank", "/d/0", "-"}, 3}};
    for (const auto& [options, code] : refused) {
        const Outcome outcome = run(Arguments{"json", "format"} + options, document);
        EXPECT_EQ(outcome.exitCode, code) << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_EQ(run({"json", "format", "-"}, "{\n]").err, "toolbelt: -: 2:0: Unexpected `]` in object\n");
    EXPECT_EQ(run({"json", "format", "-"}, std::string(100000, '[') + std::string(100000, ']')).exitCode, 4);
}

TEST(Json, GivesTheFactsOfEveryCommandAsOneDocument)
{
    const Scratch scratch;
    const std::string file = scratch.write("a'\xC3\xA4.bin", "abc");
    struct Case
    {
        Arguments arguments;
        std::string part; // of the document, without line ends and indentation
        int exitCode = 0;
    };
    const Case cases[] = {
        {{"digest", "-a", "md5", file, file},
         ",\"algorithm\":\"MD5\",\"digest\":\"900150983cd24fb0d6963f7d28e17f72\"},{\"file\":\""},
        {{"cipher", "--list"}, ",\"offered\":\"yes\"}"},
        {{"bignum", "div", "64", "7"}, "[{\"result\":\"e\"},{\"result\":\"2\"}]"},
        {{"key", "show", "keys/rsa512.pub.pem"}, "[{\"key\":\"RSA public key\",\"bits\":512,\"n\":\""},
        {{"key", "ssh", "keys/rsa512.pub.pem"}, "[{\"key\":\"ssh-rsa AAAA"},
        {{"key", "generate", "rsa", "--bits", "512", "--out", scratch.path("k")}, "k.key\",\"public key\":\""},
        {{"verify", "--key", "keys/rsa512.pub.pem", "-a", "md5", "--signature", file, file},
         "\"verdict\":\"bad signature\"}]",
         1},
        {{"cert", "show", "certificates/a-root.pem"},
         "[{\"certificate\":\"certificates/a-root.pem\",\"version\":3,\"serial\":\""},
        {{"cert", "verify", "--at", "2025-06-01", "certificates/a-root.pem"},
         "\"verdict\":\"ok\"},{\"total\":1,\"ok\":1}]"},
        {{"der", "dump", "certificates/t-2051.pem"},
         "[{\"label\":\"CERTIFICATE\",\"elements\":[{\"offset\":0,\"header\":4,\"length\":606,\"tag\":\"SEQUENCE\","
         "\"elements\":[{"},
    };
    std::string documents;
    for (const Case& row : cases) {
        const Outcome outcome = run(Arguments{"--json"} + row.arguments);
        EXPECT_EQ(outcome.exitCode, row.exitCode) << outcome.err;
        std::string flat;
        for (const std::string& line : lines(outcome.out)) {
            const std::size_t first = line.find_first_not_of(' ');
            if (first != std::string::npos) flat += line.substr(first);
        }
        std::erase(flat, '\r');
        EXPECT_NE(flat.find(row.part), std::string::npos) << flat;
        documents += (documents.empty() ? "[" : ",") + outcome.out;
    }
    EXPECT_EQ(run({"json", "format", "-"}, documents + "]").exitCode, 0) << "each of them is JSON";
    EXPECT_EQ(run({"--json", "digest", "-a", "md5", "no such file"}).out, "");
    EXPECT_EQ(run({"--json", "nonsense"}).exitCode, 2);
}

} // namespace
} // namespace toolbelt::test
