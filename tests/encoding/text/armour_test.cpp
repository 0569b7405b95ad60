#include "crypto/encoding/armour.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace toolbelt {
namespace {

using namespace std::string_literals;

constexpr char BEGIN[] = "-----BEGIN KEY-----";
constexpr char END[] = "-----END KEY----"; // four dashes: the fifth stays in the text behind the block
const auto* const abc = reinterpret_cast<const std::uint8_t*>("abcd");

std::string contents(const cByteBuffer& buffer)
{
    return {reinterpret_cast<const char*>(buffer.data()), buffer.length()};
}

// Where blocks and their headers begin and end is tested against a model.
TEST(Armour, Decodes)
{
    cByteBuffer buffer, trailing;
    const std::tuple<const char*, const char*, const char*> plain[] = {
        {"YWJj.rest\r\nYWJj", ".", "rest"}, {"YWJj", ".", ""}, {"YW\nJj", nullptr, ""}};
    for (const auto& [text, end, behind] : plain) { // the end line may be missing when no first one is asked for
        EXPECT_TRUE(decodeArmoured(buffer, text, TEXT_ZERO_TERMINATED, nullptr, end, nullptr, &trailing));
        EXPECT_EQ(contents(buffer) + "|" + contents(trailing), "abc|"s + behind);
    }
    const std::string text = BEGIN + "\r\nYWJj\r\n=uhx7\r\n"s + END;
    const auto length = static_cast<std::uint32_t>(text.size());
    std::uint8_t output[3];
    std::uint32_t size = 2;
    EXPECT_EQ(decodeArmouredInto(output, &size, text.data(), length, BEGIN, END), STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(decodeArmouredInto(output, &size, text.data(), length, BEGIN, END), STATUS_OK);
    EXPECT_EQ(std::string(output, output + size), "abc");

    EXPECT_EQ(decodeArmouredInto(output, &size, "YWJj", 4, BEGIN, END), TEXT_E_MALFORMED);
    const std::string cut = std::string(BEGIN) + "\r\n\r\nYWJj\r\n=tw\r\n" + END;
    EXPECT_EQ(decodeArmouredInto(output, &size, cut.data(), static_cast<std::uint32_t>(cut.size()), BEGIN, END),
              TEXT_E_CHECKSUM);
    EXPECT_FALSE(decodeArmoured(buffer, nullptr, 0, BEGIN, END) || base64DecodeToBuffer(buffer, nullptr));
    const char* body = nullptr;
    EXPECT_EQ(findArmourBody(&body, &size, text.data(), length, BEGIN, nullptr), TEXT_E_MALFORMED);
    EXPECT_EQ(findArmourBody(&body, &size, nullptr, 0, nullptr, END), TEXT_E_MALFORMED);

    // Plain text takes the buffer's place as soon as it has a size.
    for (const char* sizeless : {"", "=twTO", "Y===", "YWI"}) EXPECT_FALSE(base64DecodeToBuffer(buffer, sizeless));
    EXPECT_EQ(contents(buffer), "abc");
    EXPECT_TRUE(base64DecodeToBuffer(buffer, "YWI=YWI", 4));
    EXPECT_EQ(contents(buffer), "ab");
    EXPECT_TRUE(base64DecodeToBuffer(buffer, "YWJjYW=")) << "asks for five bytes and makes four";
    EXPECT_EQ(buffer.length(), 4u);
    EXPECT_FALSE(base64DecodeToBuffer(buffer, "YWJj\n=AAAA"));
    EXPECT_EQ(buffer.data(), nullptr);
}

TEST(Armour, EncodesBehindWhatIsThereAndProvesIt)
{
    cByteBuffer buffer;
    ASSERT_TRUE(buffer.append("<", 1));
    EXPECT_TRUE(encodeToBuffer(buffer, abc, 3, BEGIN, END, "1", nullptr, 0));
    EXPECT_TRUE(encodeToBuffer(buffer, abc, 3, nullptr, nullptr, nullptr, nullptr, 3));
    const std::string block = BEGIN + "\r\nVersion: 1\r\n\r\nYWJj\r\n=uhx7\r\n"s + END + "\r\n";
    EXPECT_EQ(contents(buffer), "<" + block + "YWJj");

    // The proof reads by the default alphabet, and needs bytes; what was appended before it stays.
    std::string swapped = BASE64_STANDARD_ALPHABET;
    std::swap(swapped[9], swapped[10]);
    buffer.truncate(1);
    EXPECT_FALSE(encodeToBuffer(buffer, abc, 3, nullptr, nullptr, nullptr, swapped.c_str(), 3));
    EXPECT_FALSE(encodeToBuffer(buffer, nullptr, 0, nullptr, nullptr, nullptr, nullptr, 0));
    EXPECT_EQ(contents(buffer), "<YWKj=twTO\r\n");
    buffer.truncate(1);
    EXPECT_FALSE(encodeToBuffer(buffer, abc, 3, BEGIN, nullptr, nullptr, nullptr, 3)) << "one line counts as none";
    EXPECT_EQ(contents(buffer), "<YWJj");

    const auto length = static_cast<std::uint32_t>(block.size());
    EXPECT_FALSE(armouredEquals(block.data(), length, abc + 1, 3, BEGIN, END));
    EXPECT_FALSE(armouredEquals(block.data(), length, abc, 2, BEGIN, END));
    EXPECT_FALSE(armouredEquals(block.data(), length - 4, abc, 3, BEGIN, END));
    const std::uint8_t one[] = {1, 0}; // the text has room for two bytes, and makes one
    EXPECT_FALSE(armouredEquals("YW=", 3, one, 1, nullptr, nullptr) ||
                 armouredEquals("YW=", 3, one, 2, nullptr, nullptr));
    EXPECT_TRUE(armouredEquals("YWJj", 4, abc, 3, nullptr, END));
}

} // namespace
} // namespace toolbelt
