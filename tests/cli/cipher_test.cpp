// toolbelt cipher: results against openssl enc, streams, padding, and files that appear whole or not at all.
#include <gtest/gtest.h>

#include "tests/cli/process.h"
#include "tests/support/vectors.h"

namespace toolbelt::test {
namespace {

const std::string KEY = "000102030405060708090A0b0c0d0e0f101112131415161718191a1b1c1d1e1f";
const std::string IV = "0xf0f1f2f3f4f5f6f7f8f9fafbfcfdfeff";

// More than one piece of the tool's reading, and not a whole number of 16-byte blocks.
std::string pattern(std::size_t size)
{
    std::string bytes(size, 0);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i % 251);
    return bytes;
}
constexpr std::size_t LARGE = 1048576 + 24;

TEST(Cipher, GivesWhatOpensslGivesAcrossPieces)
{
    struct Case
    {
        Arguments options;
        std::string md5; // of what `openssl enc` 3.0 wrote for the same options
    };
    const std::vector<Case> cases = {
        {{"-c", "aes-256", "-m", "cbc", "--pad", "--key", KEY, "--iv", IV}, "eb00d2b264dc58eb48a7e98fd68a0341"},
        {{"-c", "9", "-m", "cfb", "--key", KEY, "--iv", IV}, "ae12f0f986308b6dcd1dab4284b61377"},
        {{"-c", "3DES", "--key", KEY.substr(0, 48), "--iv", IV.substr(0, 18)}, "c5e6f21a14c62ec28bcb82602887c088"},
        {{"-c", "7", "-m", "ecb", "--pad", "--key", KEY.substr(0, 32)}, "a1926da7902df9193f4eeca01b3ce518"},
    };
    const Scratch scratch;
    const std::string plain = pattern(LARGE), in = scratch.write("in", plain);
    Arguments files = {"digest", "-a", "md5"};
    std::string digests;
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.options));
        const std::string out = scratch.path(c.md5);
        EXPECT_EQ(run(Arguments{"cipher", "encrypt"} + c.options + Arguments{in, out}).exitCode, 0);
        const Outcome back = run(Arguments{"cipher", "decrypt"} + c.options + Arguments{out, "-"});
        EXPECT_EQ(back.exitCode, 0) << back.err;
        EXPECT_TRUE(back.out == plain);
        files.push_back(out);
        digests += c.md5 + "  " + out + "\n";
    }
    EXPECT_EQ(run(files).out, digests);
    // Word-swapped CBC, which openssl has not: its blocks by openssl's ECB, swapped and chained by a few lines of
    // Python.
    const Outcome swapped = run(
        {"cipher", "encrypt", "-c", "aes-128", "-m", "cbc-wordswap", "--key", KEY.substr(0, 32), "--iv", IV, "-", "-"},
        pattern(96));
    EXPECT_EQ(toHex(swapped.out.data(), swapped.out.size()),
              "ac5e3d75c2d48ef8119604c321225f2e9497f949c8d2917abee2aca4ff720d2faaddf6cde21d95cfc1ebdd97cf93f691"
              "a72b1d6da16c0b1ebf8681d299388b656b8dccf7fc43946e4501cc7be9acb0e8e016ec54394f9058ca384fc180d40c6d");
}

TEST(Cipher, WritesTheWholeFileOrLeavesWhatWasThere)
{
    const Scratch scratch;
    const std::string in = scratch.write("in", pattern(LARGE)), out = scratch.write("out", "before");
    const Arguments options = {"-c", "9", "--key", KEY, "--iv", IV};
    const auto with = [&](const char* verb, const Arguments& more) {
        return run(Arguments{"cipher", verb} + options + more);
    };
    // Found out only at the end of the second piece: not a whole number of blocks, and no right padding.
    const Outcome partial = with("encrypt", {in, out});
    EXPECT_EQ(partial.exitCode, 3);
    EXPECT_NE(partial.err.find("(status 26)"), std::string::npos) << partial.err;
    const std::string blocks = scratch.write("blocks", pattern(LARGE - 8));
    EXPECT_EQ(with("decrypt", {"--pad", blocks, out}).exitCode, 3);
    EXPECT_EQ(with("encrypt", {scratch.path("missing"), out}).exitCode, 3);
    EXPECT_EQ(scratch.read("out"), "before");
    EXPECT_EQ(scratch.list(), (std::vector<std::string>{"blocks", "in", "out"})) << "no temporary file is left";

    // In place, and the shortest inputs.
    EXPECT_EQ(with("encrypt", {blocks, blocks}).exitCode, 0);
    EXPECT_EQ(with("decrypt", {blocks, blocks}).exitCode, 0);
    EXPECT_TRUE(scratch.read("blocks") == pattern(LARGE - 8));
    const std::string empty = scratch.write("empty", "");
    EXPECT_EQ(with("encrypt", {"--pad", empty, out}).exitCode, 0);
    EXPECT_EQ(scratch.read("out").size(), 16u);
    EXPECT_EQ(with("decrypt", {"--pad", empty, out}).exitCode, 3) << "padding is never empty";
}

TEST(Cipher, ListsTheRowsAndRefusesWrongOptions)
{
    const std::vector<std::string> rows = lines(run({"cipher", "--list"}).out);
    ASSERT_EQ(rows.size(), 26u);
    EXPECT_EQ(rows[5], "4     blowfish-128       16       56      8  yes");
    EXPECT_EQ(rows[25], "0x87  rc6                32       32     16  no");
    const std::vector<Arguments> wrong = {
        {"cipher", "encrypt", "--key", KEY, "a", "b"},
        {"cipher", "encrypt", "-c", "6", "--key", KEY, "a", "b"},
        {"cipher", "encrypt", "-c", "9", "--key", "0011", "a", "b"}, // no AES key
        {"cipher", "encrypt", "-c", "9", "--key", KEY, "--iv", "00", "a", "b"},
        {"cipher", "encrypt", "-c", "9", "-m", "ecb", "--key", KEY, "--iv", IV, "a", "b"},
        {"cipher", "encrypt", "-c", "9", "-m", "cfb", "--pad", "--key", KEY, "a", "b"},
        {"cipher", "encrypt", "-c", "9", "-m", "ofb", "--key", KEY, "a", "b"},
    };
    for (const Arguments& arguments : wrong) EXPECT_EQ(run(arguments).exitCode, 2) << testing::PrintToString(arguments);
}

} // namespace
} // namespace toolbelt::test
