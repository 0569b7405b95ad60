// cert show and cert verify against the index of the test certificates, which is openssl's view of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "tests/cli/process.h"
#include "tests/support/vectors.h"

namespace toolbelt::test {
namespace {

constexpr char FOLDER[] = "certificates/";
constexpr char DAY[] = "2024-01-01";

std::map<std::string, Record> readIndex()
{
    std::map<std::string, Record> index;
    for (const Record& record : readVectors("certificates/index.txt"))
        if (record.kind() == "file") index[record.get("file")] = record;
    return index;
}

std::string fileBytes(const std::string& name)
{
    const Bytes bytes = readVectorFile(FOLDER + name);
    return std::string(bytes.begin(), bytes.end());
}

// What the tool must say of a certificate checked with its issuer's key.
std::string expectedVerdict(const Record& record, const Record& issuer)
{
    if (issuer.get("key") != "RSA" && issuer.get("key") != "DSA") return "unsupported key (status 33)";
    const std::set<std::string> offered = {"md5WithRSAEncryption", "sha1WithRSAEncryption", "sha256WithRSAEncryption",
                                           "sha512WithRSAEncryption", "dsaWithSHA1"};
    if (!offered.contains(record.get("signature"))) return "unsupported digest (status 22)";
    if (record.get("signature-check") != "good") return "bad signature";
    if (record.get("not-before").substr(0, 10) > DAY) return "not yet valid";
    return record.get("not-after").substr(0, 10) < DAY ? "expired" : "ok";
}

TEST(CertVerify, AgreesWithTheIndexOnEveryVerdict)
{
    const auto index = readIndex();
    std::map<std::string, std::vector<std::string>> byIssuer;
    for (const auto& [file, record] : index)
        if (record.has("issuer-file")) byIssuer[record.get("issuer-file")].push_back(file);
    std::map<std::string, unsigned> seen;
    for (const auto& [issuer, files] : byIssuer) {
        const bool tellsMore = std::any_of(files.begin(), files.end(), [&](const std::string& file) {
            return seen[expectedVerdict(index.at(file), index.at(issuer))] < 2;
        });
        if (!tellsMore) continue; // starting the program takes longest
        std::vector<std::string> arguments = {"cert", "verify", "--at", DAY, "--issuer", FOLDER + issuer};
        std::string expected;
        bool allOk = true;
        for (const std::string& file : files) {
            const std::string verdict = expectedVerdict(index.at(file), index.at(issuer));
            arguments.push_back(FOLDER + file);
            expected += FOLDER + file + ": " + verdict + "\n";
            allOk = allOk && verdict == "ok";
            ++seen[verdict];
        }
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.out.substr(0, expected.size()), expected) << issuer;
        EXPECT_EQ(lines(outcome.out).size(), files.size() + 1) << outcome.out;
        EXPECT_EQ(outcome.exitCode, allOk ? 0 : 1) << issuer;
    }
    EXPECT_EQ(seen.size(), 6u) << "every verdict but malformed occurs";
}

TEST(CertVerify, CountsManyFilesBundlesAndMalformedOnes)
{
    // Without --issuer only the self-signed pass.
    EXPECT_EQ(run({"cert", "verify", "--at", DAY, "certificates/chain-b-crlf.pem", "certificates/a-root.der",
                   "certificates/ec-root.pem"})
                  .out,
              "certificates/chain-b-crlf.pem#1: bad signature\ncertificates/chain-b-crlf.pem#2: bad signature\n"
              "certificates/chain-b-crlf.pem#3: bad signature\ncertificates/chain-b-crlf.pem#4: ok\n"
              "certificates/a-root.der: ok\ncertificates/ec-root.pem: unsupported key (status 33)\n"
              "6 in total: 2 ok, 3 bad signature, 1 unsupported key\n");
    std::vector<std::string> many = {"cert", "verify", "--at", DAY};
    many.insert(many.end(), 150, "certificates/b-root.pem");
    const Outcome outcome = run(many);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(lines(outcome.out).back(), "150 in total: 150 ok");

    const Scratch scratch;
    const std::string root = fileBytes("a-root.der");
    const std::string longer = scratch.write("longer.der", root + '\0'), empty = scratch.write("empty", ""),
                      missing = scratch.path("none");
    const std::string key = "keys/rsa512.pub.pem", truncated = "certificates/bad-truncated.pem";
    const Outcome bad = run({"cert", "verify", longer, empty, key, truncated, missing});
    EXPECT_EQ(bad.exitCode, 3);
    EXPECT_EQ(bad.out, longer + ": malformed (status 10)\n" + empty + ": malformed (status 10)\n" + key +
                           ": malformed (status 41)\n" + truncated +
                           ": malformed (status 10)\n5 in total: 0 ok, 4 malformed, 1 unreadable\n");
    EXPECT_TRUE(bad.err.starts_with("toolbelt: " + missing + ": cannot be opened")) << bad.err;
    EXPECT_EQ(run({"cert", "verify", "--at", DAY, "--issuer", longer, "certificates/a-root.pem"}).exitCode, 3);
    // Both ends of the validity count: notBefore of t-2055 is midnight of 2010-01-01, notAfter midnight of 2055-06-30.
    const auto at = [](const std::string& day) {
        return run({"cert", "verify", "--at", day, "certificates/t-2055.pem"}).out;
    };
    EXPECT_NE(at("2009-12-31").find(": not yet valid\n"), std::string::npos);
    EXPECT_NE(at("2010-01-01").find(": ok\n"), std::string::npos);
    EXPECT_NE(at("2055-06-30").find(": ok\n"), std::string::npos);
    EXPECT_NE(at("2055-07-01").find(": expired\n"), std::string::npos);
}

// "  subject: x" -> x; the first line of that name.
std::string field(const std::vector<std::string>& block, const std::string& name)
{
    for (const std::string& line : block) {
        const std::size_t at = line.find_first_not_of(' ');
        if (line.compare(at, name.size() + 2, name + ": ") == 0) return line.substr(at + name.size() + 2);
    }
    return "(no " + name + ")";
}

TEST(CertShow, AgreesWithTheIndex)
{
    std::vector<std::string> arguments = {"cert", "show"};
    std::map<std::string, Record> index = readIndex();
    std::erase_if(index, [](const auto& entry) { return entry.second.has("parse"); });
    for (const auto& [file, record] : index) arguments.push_back(FOLDER + file);
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.exitCode, 0);
    std::map<std::string, std::vector<std::string>> blocks;
    std::string current;
    for (const std::string& line : lines(outcome.out)) {
        if (line.starts_with("certificate: ")) current = line.substr(13 + sizeof FOLDER - 1);
        blocks[current].push_back(line);
    }
    ASSERT_EQ(blocks.size(), index.size());
    for (const auto& [file, record] : index) {
        const auto& block = blocks.at(file);
        const auto name = [&](const char* which) {
            std::string text = field(block, which);
            std::erase(text, '\\'); // the index does not quote commas
            return text;
        };
        const auto time = [&](const char* which) {
            const std::string text = record.get(which); // 2010-01-01T00:00:00Z
            return text.substr(0, 10) + " " + text.substr(11, 8) + " UTC";
        };
        EXPECT_EQ(field(block, "version"), record.get("version")) << file;
        EXPECT_EQ(field(block, "serial"), record.get("serial")) << file;
        EXPECT_EQ(name("issuer"), record.get("issuer")) << file;
        EXPECT_EQ(name("subject"), record.get("subject")) << file;
        EXPECT_EQ(field(block, "not before"), time("not-before")) << file;
        EXPECT_EQ(field(block, "not after"), time("not-after")) << file;
        if (record.get("key") == "RSA") {
            EXPECT_EQ(field(block, "bits"), record.get("key-bits")) << file;
        }
        if (record.get("ski") != "none") {
            EXPECT_EQ(field(block, "subjectKeyIdentifier (2.5.29.14)"), record.get("ski")) << file;
        }
        const std::string ca = record.get("ca") == "yes" ? "CA" : "not a CA";
        const std::string pathLength =
            record.get("path-length") == "none" ? "" : ", path length " + record.get("path-length");
        if (record.get("ca") != "absent") {
            EXPECT_EQ(field(block, "basicConstraints (2.5.29.19)"),
                      (record.get("ca-critical") == "yes" ? "critical, " : "") + ca + pathLength)
                << file;
        }
    }
}

TEST(CertShow, HostileNamesCannotPlayWithTheTerminal)
{
    const Scratch scratch;
    std::string bytes = fileBytes("a-root.der");
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

} // namespace
} // namespace toolbelt::test
