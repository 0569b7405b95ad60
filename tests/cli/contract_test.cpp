// What holds for every command: its help, and the exit code for a file that cannot be read.
#include <gtest/gtest.h>

#include "tests/cli/process.h"

namespace toolbelt::test {
namespace {

struct Row
{
    Arguments command;
    Arguments unreadable; // arguments that name a file which is not there; none for a command without files
};

TEST(EveryCommand, HelpsWithAnExampleAndNamesAFileThatItCannotRead)
{
    const std::string key(64, '0');
    const std::vector<Row> rows = {
        {{"digest"}, {"-a", "1", "nowhere"}},
        {{"cipher", "encrypt"}, {"-c", "9", "--key", key, "nowhere", "out"}},
        {{"cipher", "decrypt"}, {"-c", "9", "--key", key, "nowhere", "out"}},
        {{"cipher"}, {}},
        {{"bignum"}, {}},
        {{"armour"}, {"nowhere", "out"}},
        {{"dearmour"}, {"nowhere", "out"}},
        {{"der", "dump"}, {"nowhere"}},
        {{"key", "generate"}, {}},
        {{"key", "show"}, {"nowhere"}},
        {{"key", "ssh"}, {"nowhere"}},
        {{"sign"}, {"--key", "nowhere", "-a", "2", "nowhere"}},
        {{"verify"}, {"--key", "nowhere", "-a", "2", "--signature", "nowhere", "nowhere"}},
        {{"encrypt"}, {"--key", "nowhere", "nowhere", "out"}},
        {{"decrypt"}, {"--key", "nowhere", "nowhere", "out"}},
        {{"cert", "show"}, {"nowhere"}},
        {{"cert", "verify"}, {"nowhere"}},
        {{"json", "format"}, {"nowhere"}},
        {{"text", "show"}, {"nowhere"}},
        {{"text", "find"}, {"nowhere", "key"}},
        {{"post"}, {"http://127.0.0.1:9/", "nowhere"}},
        {{"dialog"}, {}},
        {{"system"}, {}},
        {{"speed"}, {}},
    };
    const std::string list = run({"--help"}).out;
    for (const Row& row : rows) {
        std::string name = row.command[0];
        if (row.command.size() > 1) name += " " + row.command[1];
        SCOPED_TRACE(name);
        EXPECT_TRUE(contains(list, "\n  " + name + " "));
        const Outcome help = run(row.command + Arguments{"--help"});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_EQ(help.err, "");
        EXPECT_TRUE(contains(help.out, "Usage: toolbelt " + name)) << help.out;
        EXPECT_TRUE(contains(help.out, "Example: toolbelt " + row.command[0])) << help.out;
        if (row.unreadable.empty()) continue;
        const Outcome outcome = run(row.command + row.unreadable);
        EXPECT_EQ(outcome.exitCode, 3);
        EXPECT_TRUE(outcome.err.starts_with("toolbelt: nowhere: ")) << outcome.err;
    }
}

// What the system refuses: a server that nobody runs, a folder that is not there.
TEST(EveryCommand, TellsWhatTheSystemRefused)
{
    const Scratch scratch;
    const std::string file = scratch.write("in.json", "{}");
    for (const Arguments& command :
         {Arguments{"post", "http://127.0.0.1:9/", file}, Arguments{"armour", file, scratch.path("nowhere/out")},
          Arguments{"key", "generate", "rsa", "--bits", "512", "--out", scratch.path("nowhere/pair")}}) {
        const Outcome outcome = run(command);
        EXPECT_EQ(outcome.exitCode, 4) << command[0];
        EXPECT_TRUE(outcome.err.starts_with("toolbelt: ")) << outcome.err;
        EXPECT_EQ(outcome.out, "") << command[0];
    }
}

TEST(Speed, TimesTheJobsThatAreNamed)
{
    const Outcome outcome = run({"speed", "digest-64B/MD5", "mul/2048", "--seconds", "0.01", "--tier", "portable"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_TRUE(outcome.out.starts_with("tier: portable\ndigest-64B/MD5 ")) << outcome.out;
    EXPECT_TRUE(contains(outcome.out, " MB/s\nmul/2048 ") && outcome.out.ends_with(" ops/s\n")) << outcome.out;
    EXPECT_EQ(run({"speed", "nonsense"}).exitCode, 2);
    EXPECT_EQ(run({"speed", "--tier", "nonsense"}).exitCode, 2);
}

} // namespace
} // namespace toolbelt::test
