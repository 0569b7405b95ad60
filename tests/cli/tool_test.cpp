// Commands on what is too large for commands.txt, or is computed from the vectors.
#include <windows.h>

#include <gtest/gtest.h>

#include "tests/cli/process.h"
#include "tests/support/vectors.h"

namespace toolbelt::test {
namespace {

TEST(Cipher, ListsTheRows)
{
    EXPECT_EQ(lines(run({"cipher", "--list"}).out).size(), 26u);
}

// Sequences around sequences, of definite and of indefinite length.
TEST(Der, DumpsToADepthOnly)
{
    std::string deep, shallow;
    for (int i = 0; i < 60000; ++i) deep += "\x30\x80";
    for (int i = 0; i < 100; ++i)
        shallow = "\x30\x82" + std::string{static_cast<char>(shallow.size() >> 8), static_cast<char>(shallow.size())} +
                  shallow;
    EXPECT_EQ(run({"der", "dump", "-"}, deep).exitCode, 3);
    const Outcome bounded = run({"der", "dump", "-"}, shallow);
    EXPECT_EQ(bounded.exitCode, 0);
    EXPECT_EQ(lines(bounded.out).size(), 65u);
}

std::string certificateBytes(const std::string& name)
{
    const Bytes bytes = readVectorFile("certificates/" + name);
    return std::string(bytes.begin(), bytes.end());
}

TEST(CertVerify, CountsManyFilesAndRefusesWhatIsBehindThem)
{
    Arguments many = {"cert", "verify", "--at", "2024-01-01"};
    many.insert(many.end(), 150, "certificates/b-root.pem");
    const Outcome outcome = run(many);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(lines(outcome.out).back(), "150 in total: 150 ok");
    const Scratch scratch;
    const std::string longer = scratch.write("longer.der", certificateBytes("a-root.der") + '\0');
    EXPECT_EQ(run({"cert", "verify", longer}).out, longer + ": malformed (status 10)\n1 in total: 0 ok, 1 malformed\n");
    EXPECT_EQ(run({"cert", "verify", "--issuer", longer, "certificates/a-root.pem"}).exitCode, 3);
}

TEST(CertShow, HostileNamesCannotPlayWithTheTerminal)
{
    const Scratch scratch;
    std::string bytes = certificateBytes("a-root.der");
    const std::string name = "Vector Test",
                      hostile = "\x1B[2J,\xE2\x80\xAE\xC0\xAF\n"; // clear screen, right to left, overlong
    ASSERT_EQ(name.size(), hostile.size());
    for (std::size_t at = bytes.find(name); at != std::string::npos; at = bytes.find(name, at))
        bytes.replace(at, name.size(), hostile);
    const Outcome outcome = run({"cert", "show", scratch.write("hostile.der", bytes)});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(outcome.out.find("O=\\x1b[2J\\,\\u202e\\xc0\\xaf\\x0a, OU="), std::string::npos) << outcome.out;
    EXPECT_EQ(outcome.out.find('\x1B'), std::string::npos);
}

TEST(Json, ReadsWhatIsLongAndRefusesToWriteWhatIsDeep)
{
    EXPECT_EQ(run({"json", "format", "-"}, std::string(100000, '[') + std::string(100000, ']')).exitCode, 4);
    const Bytes expected = readVectorFile("json/settings.expected");
    std::string written = run({"json", "format", "json/settings.json"}).out;
    std::erase(written, '\r');
    EXPECT_EQ(written, std::string(expected.begin(), expected.end()));
}

TEST(Text, IsWrittenInPiecesThatCutNoPair)
{
    const std::string text = std::string((1 << 20) - 1, 'x') + "\xF0\x9F\x98\x80";
    EXPECT_TRUE(run({"text", "show", "-"}, text).out == text);
}

// What it tells is what the system itself says.
TEST(SystemTool, TellsTheSystemAndTheLibrary)
{
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof version;
    ASSERT_TRUE(GetVersionExW(&version));
    BOOL isOn64 = FALSE;
    ASSERT_TRUE(IsWow64Process(GetCurrentProcess(), &isOn64));
    const Outcome told = run({"system"});
    const std::string build = ", Build " + std::to_string(version.dwBuildNumber) + " ";
    const std::string own = run({"--version"}).out.substr(std::string("toolbelt ").size()); // and the line's end
    EXPECT_TRUE(told.out.starts_with("system: OS: PlatformId 2, Major " + std::to_string(version.dwMajorVersion) +
                                     ", Minor " + std::to_string(version.dwMinorVersion) + build +
                                     "\n  32-on-64: " + (isOn64 ? "yes" : "no") + "\n  library version: " + own))
        << told.out << told.err;
    const Outcome json = run({"--json", "system"});
    EXPECT_TRUE(contains(json.out, build)) << json.out;
}

} // namespace
} // namespace toolbelt::test
