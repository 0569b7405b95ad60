#include "crypto/encoding/base64.h"
#include "crypto/encoding/base64_avx2.h"

#include <random>
#include <string>

#include <gtest/gtest.h>

#include "crypto/encoding/crc24.h"
#include "tests/support/tiers.h"
#include "tests/support/vectors.h"

namespace toolbelt {
namespace {

using test::Bytes;
using namespace std::string_literals;

constexpr std::uint32_t PLAIN = BASE64_NO_CHECKSUM | BASE64_NO_BREAKS;

// Encodes as a careful caller does: asks for the size, is refused with one character less, then has exactly enough.
std::string encode(const Bytes& data, std::uint32_t flags, const char* begin = nullptr, const char* end = nullptr,
                   const char* version = nullptr, const char* alphabet = nullptr)
{
    std::uint32_t size = 0;
    const auto run = [&](char* output) {
        const auto length = static_cast<std::uint32_t>(data.size());
        return base64Encode(output, &size, data.data(), length, begin, end, version, alphabet, flags);
    };
    if (run(nullptr) != STATUS_BUFFER_TOO_SMALL) return {};
    std::vector<char> text(size--, '#');
    EXPECT_EQ(run(text.data()), STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(text, std::vector<char>(size, '#')) << "too small: the size is told, the output untouched";
    EXPECT_EQ(run(text.data()), STATUS_OK);
    EXPECT_EQ(size, text.size());
    return {text.begin(), text.end()};
}

struct Decoded
{
    Status status;
    std::string bytes; // as many as the size says, which is the size of the block after most failures
    std::uint32_t consumed;
    bool operator==(const Decoded&) const = default;
};

// Decodes in the same three steps, from and into blocks of the exact size.
Decoded decode(std::string_view text, const char* alphabet = nullptr)
{
    const std::vector<char> input(text.begin(), text.end());
    Bytes output;
    std::uint32_t size = 0, consumed = 0;
    const auto run = [&] {
        const auto length = static_cast<std::uint32_t>(input.size());
        return base64Decode(output.data(), &size, input.data(), length, alphabet, &consumed);
    };
    Status status = run();
    if (status == STATUS_BUFFER_TOO_SMALL) {
        output.assign(size--, '#');
        EXPECT_EQ(run(), STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(output, Bytes(size, '#'));
        status = run();
    }
    return {status, std::string(output.begin(), output.begin() + size), consumed};
}

std::string checksumText(const Bytes& data)
{
    const std::uint32_t crc = crc24(data.data(), static_cast<std::uint32_t>(data.size()));
    return encode({std::uint8_t(crc >> 16), std::uint8_t(crc >> 8), std::uint8_t(crc)}, PLAIN);
}

TEST(Base64, PublishedVectors)
{
    for (const test::Record& record : test::readVectors("base64.txt")) {
        const Bytes data = record.message("base64"), crc = record.bytes("crc24");
        const std::string& text = record.get("text");
        EXPECT_EQ(encode(data, PLAIN), text) << record.where;
        EXPECT_EQ(decode(text), (Decoded{0, std::string(data.begin(), data.end()), std::uint32_t(text.size())}));
        const auto size = static_cast<std::uint32_t>(data.size());
        for (std::uint32_t split = 0; split <= size; ++split)
            ASSERT_EQ(crc24(data.data() + split, size - split, crc24(data.data(), split)),
                      std::uint32_t(crc[0] << 16 | crc[1] << 8 | crc[2]))
                << record.where << " split at " << split;
        EXPECT_TRUE(record.unread().empty());
    }
}

TEST(Base64, LinesByFlagAndOptionForEveryLength)
{
    EXPECT_EQ(encode({'a', 'b', 'c'}, PLAIN, "BEGIN", nullptr, ""), "YWJj") << "one line alone does not count";
    EXPECT_EQ(encode({'a', 'b', 'c'}, BASE64_NO_BREAKS), "YWJj\r\n=uhx7\r\n");
    EXPECT_EQ(encode({}, 0, "BEGIN", "END", "1"), "BEGIN\r\nVersion: 1\r\n\r\n=twTO\r\nEND\r\n");
    EXPECT_EQ(encode(Bytes(49), 1), std::string(64, 'A') + "\r\nAA==\r\n");
    Bytes data;
    for (std::uint32_t length = 1; length <= 200; ++length) {
        data.push_back(static_cast<std::uint8_t>(length * 91 ^ length >> 2));
        const std::string bytes(data.begin(), data.end()), body = encode(data, PLAIN), sum = "=" + checksumText(data);
        std::string broken;
        for (std::size_t at = 0; at < body.size(); at += 64) broken += body.substr(at, 64) + "\r\n";
        EXPECT_EQ(encode(data, BASE64_NO_CHECKSUM), broken);
        EXPECT_EQ(encode(data, PLAIN, nullptr, nullptr, "v"), "Version: v\r\n\r\n" + broken);
        EXPECT_EQ(encode(data, 0, "<", ">", "v"), "<\r\nVersion: v\r\n\r\n" + broken + sum + "\r\n>\r\n");
        for (const std::string& text : {body, broken, broken + sum})
            ASSERT_EQ(decode(text + "\r\n").bytes, bytes) << length;
        ASSERT_EQ(decode(broken + sum + "\r\n"), (Decoded{0, bytes, std::uint32_t(broken.size() + 5)}));
    }

    const auto ask = [](std::uint32_t dataLength, std::uint32_t flags, std::uint32_t size = 0) {
        const Status status =
            base64Encode(nullptr, &size, nullptr, dataLength, nullptr, nullptr, nullptr, nullptr, flags);
        return std::pair(status, size);
    };
    EXPECT_EQ(ask(3221225469, PLAIN), std::pair(STATUS_BUFFER_TOO_SMALL, 4294967292u));
    EXPECT_EQ(ask(3221225470, PLAIN), std::pair(TEXT_E_CONSISTENCY, 0u));
    EXPECT_EQ(ask(3221225469, BASE64_NO_CHECKSUM), std::pair(TEXT_E_CONSISTENCY, 0u)) << "line ends count";
}

TEST(Base64, Alphabets)
{
    const std::string standard = BASE64_STANDARD_ALPHABET, url = standard.substr(0, 62) + "-_=";
    const Bytes data = {0xFB, 0xFF, 0xBE};
    EXPECT_EQ(defaultAlphabet(), standard);
    const char* const before = setDefaultAlphabet(url.c_str());
    EXPECT_EQ(encode(data, PLAIN), "-_--");
    EXPECT_EQ(decode("-_--").bytes, std::string(data.begin(), data.end()));
    EXPECT_EQ(std::pair(base64Index('_'), base64Index('+')), std::pair(63, -1));
    EXPECT_EQ(setDefaultAlphabet(nullptr), url.c_str());
    EXPECT_EQ(defaultAlphabet(), before);
    EXPECT_EQ(std::pair(base64Index('='), base64Index('A')), std::pair(64, 0));

    // A character that occurs twice stands for its highest position, so what it should stand for cannot be read back.
    const std::string same(65, 'A');
    EXPECT_EQ(base64Index('A', same.c_str()), 64);
    char output[16] = "unchanged";
    std::uint32_t size = sizeof output;
    EXPECT_EQ(base64Encode(output, &size, data.data(), 3, nullptr, nullptr, nullptr, same.c_str()), TEXT_E_CONSISTENCY);
    EXPECT_EQ(std::pair("unchanged"s, 16u), std::pair(std::string(output), size));
}

// Which texts fail is tested against a model of the decoder; here what a failure leaves.
TEST(Base64, FailuresWipeUnlessAllBytesWereDecoded)
{
    EXPECT_EQ(decode("YWJjYWI=="), (Decoded{TEXT_E_MALFORMED, "\0\0\0#"s, 0})); // two pads make room for one byte
    EXPECT_EQ(decode("YWJj\n=uhx8"), (Decoded{TEXT_E_CHECKSUM, "abc", 0}));
    EXPECT_EQ(decode("YWJj\n=uhx"), (Decoded{TEXT_E_CHECKSUM, "\0\0\0"s, 0})); // cut short
}

// The vector routines take what is plain and leave the rest: mostly plain texts, in lines of any length, with a
// character put in here and there, make the same of themselves on every tier.
TEST(Base64, TiersAgree)
{
    std::mt19937 random(5);
    constexpr std::string_view oddities = "=\r\n \t-A/+\x80\xC1";
    for (int round = 0; round < 3000; ++round) {
        Bytes data(random() % 400);
        for (std::uint8_t& byte : data) byte = static_cast<std::uint8_t>(random());
        std::string text = encode(data, random() % 4);
        if (random() % 4 == 0)
            for (std::size_t line = random() % 80 + 1, at = line; at < text.size(); at += line + 2)
                text.insert(at, random() % 2 ? "\r\n" : "\n");
        for (std::uint32_t i = random() % 3; i != 0 && !text.empty(); --i)
            text[random() % text.size()] = oddities[random() % oddities.size()];
        const Decoded decoded = decode(text);
        const test::FeatureLimit limit(0);
        ASSERT_EQ(decode(text), decoded) << text;
        const std::uint32_t flags = random() % 4;
        const std::string portable = encode(data, flags);
        cpu::limitFeatures(~0u);
        ASSERT_EQ(encode(data, flags), portable);
    }
    if (!cpu::has(cpu::AVX2)) GTEST_SKIP() << "only the portable routines run here";
    const Bytes data(480);
    const std::string text = encode(data, BASE64_NO_CHECKSUM); // ten lines
    char lines[700];
    std::uint8_t bytes[480];
    EXPECT_EQ(base64EncodeAvx2(lines, data.data(), 480, true), 432u); // all but the last one
    const Base64Run run = base64DecodeAvx2(bytes, 480, text.data(), static_cast<std::uint32_t>(text.size()));
    EXPECT_EQ(std::pair(run.characters, run.digits), std::pair(658u, 640u));
}

} // namespace
} // namespace toolbelt
