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

// Decodes from a block that ends with the text into three buffers that hold something, and shows them.
std::string decodeAll(std::string_view text, const char* begin = BEGIN, const char* end = END)
{
    const std::vector<char> input(text.begin(), text.end());
    const auto length = static_cast<std::uint32_t>(input.size());
    cByteBuffer decoded, header, trailing;
    for (cByteBuffer* buffer : {&decoded, &header, &trailing}) EXPECT_TRUE(buffer->append("old", 3));
    const bool succeeded = decodeArmoured(decoded, input.data(), length, begin, end, &header, &trailing);
    const std::string all = contents(decoded) + "|" + contents(header) + "|" + contents(trailing);
    EXPECT_EQ(succeeded, all != "old|old|old");
    return succeeded ? all : "refused";
}

TEST(Armour, HeadersEndWhereTheyShould)
{
    // The mark | shows where the body begins; it is no part of the text.
    for (const std::string& marked : {
             "|\r\nYWJj\r\n"s, "\n \t\r\n|\nYWJj"s,
             "\r\nYWJj\r\n\r\n|YWJj\r\n\r\n"s, // the first empty line, wherever it is
             "\r\nVersion: 1\r|\nYWJj"s,       // without one: up to the LF, which stays
             "\r\nVersion: 1\r\n\r\n|YWJj"s, "|Version: 1"s, "\n\nVersion: 1|\nYWJj"s, "|\r\nx Version: 1\r\nYWJj"s,
             " \t\r\nVersion: 1\r\n \tComment: x\r|\n\r\nYWJj"s, "\nVersion: 1|\nx\nComment: x\nYWJj"s,
             "Comment: x|\n\nVersion: 1\nYWJj"s,
             "\nVersion: 1\n\nYWJj\r\n\r\n \r\n\r\n|YWJj"s, // the separator comes before all else
             "\r\n\r\n| \r\n \r\n"s,                        // not quite the separator
         }) {
        const std::size_t mark = marked.find('|');
        const std::string text = marked.substr(0, mark) + marked.substr(mark + 1);
        const std::vector<char> exact(text.begin(), text.end());
        EXPECT_EQ(armourHeaderLength(exact.data(), static_cast<std::uint32_t>(exact.size())), mark) << marked;
    }
}

TEST(Armour, EveryPartOfABlockIsFoundAndNothingInItsPrefixes)
{
    const std::string block = "-----BEGI"s + BEGIN + "\r\nVersion: 1\r\n\r\nYWJj\r\n" + END,
                      text = block + "-\r\n" + block;
    const char *body = nullptr, *header = nullptr, *rest = nullptr;
    std::uint32_t length = 77, restLength = 77;
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
        const std::vector<char> exact(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(cut));
        const bool whole = cut >= block.size();
        ASSERT_EQ(findArmourBody(&body, &length, exact.data(), static_cast<std::uint32_t>(cut), BEGIN, END, &header,
                                 &rest, &restLength),
                  whole ? STATUS_OK : TEXT_E_MALFORMED);
        ASSERT_EQ(decodeAll(text.substr(0, cut)), !whole                ? "refused"
                                                  : cut == block.size() ? "abc|Version: 1\r|"
                                                                        : "abc|Version: 1\r|-");
        if (whole) {
            ASSERT_EQ(std::string_view(body, length), "YWJj\r\n");
            ASSERT_EQ(header, exact.data() + block.find("Version"));
            ASSERT_EQ(rest, exact.data() + block.size());
            ASSERT_EQ(restLength, cut - block.size());
        } else {
            ASSERT_TRUE(!body && !header && !rest && length == 77 && restLength == 77);
        }
    }
    ASSERT_EQ(findArmourBody(&body, &length, "aaab\n\xFFzz", 8, "aab", "z"), STATUS_OK);
    EXPECT_EQ(std::string_view(body, length), "\n\xFF");
    EXPECT_EQ(findArmourBody(&body, &length, "z aab", 5, "aab", "z"), TEXT_E_MALFORMED) << "the end line comes first";
    EXPECT_EQ(findArmourBody(&body, &length, "aab", 3, "aab", nullptr), TEXT_E_MALFORMED);
    EXPECT_EQ(findArmourBody(&body, &length, nullptr, 0, nullptr, "z"), TEXT_E_MALFORMED);
}

TEST(Armour, Decodes)
{
    const std::string begin = BEGIN, end = END, body = "\r\nYWJj\r\n=uhx7\r\n";
    EXPECT_EQ(decodeAll(begin + body + end + "next\0more"s), "abc||next");
    EXPECT_EQ(decodeAll(begin + "\n\nYWJj" + end), "abc|YWJj" + end + "|") << "no LF: the line ends with the text";
    EXPECT_EQ(decodeAll(begin + "Version: 1\n\nYWJj" + end), "abc|ersion: 1|") << "one character is a line end's";
    EXPECT_EQ(decodeAll("YW\nJj", nullptr, nullptr), "abc||");
    EXPECT_EQ(decodeAll("YWJj.rest\r\nYWJj", nullptr, "."), "abc||rest");
    EXPECT_EQ(decodeAll("YWJj", nullptr, "."), "abc||") << "an end line that is not there";
    for (const std::string& damaged : {""s, "\r\n=twTO\r\n"s, "\nY="s, "\nYWJj\n=uhx8"s, "\nYWJj==="s})
        EXPECT_EQ(decodeAll(begin + damaged + end), "refused") << damaged;

    cByteBuffer buffer;
    const std::string text = begin + body + end;
    EXPECT_TRUE(decodeArmoured(buffer, "YWJj", TEXT_ZERO_TERMINATED, nullptr, nullptr));
    EXPECT_EQ(contents(buffer), "abc");
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
