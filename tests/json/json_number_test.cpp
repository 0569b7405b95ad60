// Numbers and strings as JSON texts: exact, and safe on what is cut short.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <random>

#include "tests/support/vectors.h"
#include "json/json_number.h"
#include "json/json_source.h"

namespace toolbelt::test {
namespace {

using namespace std::string_literals;

template <typename Number>
std::string digits(Number number)
{
    wchar_t text[JSON_NUMBER_SIZE];
    const std::uint32_t units = jsonNumberText(text, number);
    return std::string(text, text + units);
}

TEST(JsonNumber, WritesTheFewestDigits)
{
    constexpr double INFINITE = std::numeric_limits<double>::infinity();
    // The digits are Python's repr; forms without ".0" and with the shorter of the two notations.
    const std::pair<double, const char*> rows[] = {{-0.0, "-0"},        {5, "5"},
                                                   {0.1, "0.1"},        {1e20, "1e+20"},
                                                   {1e-7, "1e-07"},     {5e-324, "5e-324"},
                                                   {INFINITE, "null"},  {0.1 + 0.2, "0.30000000000000004"},
                                                   {-INFINITE, "null"}, {std::nan(""), "null"}};
    for (const auto& [number, expected] : rows) EXPECT_EQ(digits(number), expected);
    EXPECT_EQ(digits(INT64_MAX), "9223372036854775807");
    EXPECT_EQ(digits(INT64_MIN), "-9223372036854775808");

    std::mt19937_64 random(20023);
    for (int i = 0; i < 20000; ++i) {
        std::uint64_t bits = random();
        // Half of them between 2^53 and 2^126, where a product of two doubles is read.
        if (i % 2) bits = (bits & ~(std::uint64_t(0x7FF) << 52)) | (1076 + random() % 73) << 52;
        const double number = std::bit_cast<double>(bits);
        if (!std::isfinite(number)) continue;
        const std::string text = digits(number);
        JsonValue read;
        ASSERT_EQ(jsonReadNumber(read, text.data(), static_cast<std::uint32_t>(text.size())), JsonNumberResult::ok);
        ASSERT_EQ(read.type == JSON_DOUBLE ? read.number : static_cast<double>(read.integer), number) << text;
    }
}

// The type and the value that are read: "i 5", "d 0.5"; or what is wrong.
std::string readAs(const std::string& text)
{
    JsonValue value;
    const JsonNumberResult result = jsonReadNumber(value, text.data(), static_cast<std::uint32_t>(text.size()));
    if (result != JsonNumberResult::ok) {
        EXPECT_EQ(value.type, JSON_NONE) << text;
        return result == JsonNumberResult::malformed ? "malformed" : "out of range";
    }
    if (value.type == JSON_INTEGER) return "i " + std::to_string(value.integer);
    char number[40];
    std::snprintf(number, sizeof number, "d %.17g", value.number);
    return number;
}

TEST(JsonNumber, ReadsTheNearest)
{
    // Among them: products that lie halfway between two doubles once they have been rounded to 64 bits.
    for (const std::string& row : readVectors("json/numbers.txt").front().list("case")) {
        const std::size_t bar = row.find('|');
        EXPECT_EQ(readAs(row.substr(0, bar - 1)), row.substr(bar + 2)) << row;
    }
}

TEST(JsonSource, FindsAndReadsStrings)
{
    const std::string document =
        "\xEF\xBB\xBF{\"\\u0041\\\\\\\"\\/\\b\\f\\n\\r\\t\\q\\u20aC\\uD840\\udc00\\u0000.\": [ "
        "-1.5e+3 ,\n true,\n\"-1\",2]}";
    // Every prefix in a block of its own size, so that a read beyond it is seen.
    for (std::size_t size = 0; size <= document.size(); ++size) {
        const std::unique_ptr<char[]> block(new char[size]);
        std::memcpy(block.get(), document.data(), size);
        JsonSource source(block.get(), static_cast<std::uint32_t>(size));
        std::string found;
        for (JsonToken token; source.next(token);) {
            char out[64];
            std::uint32_t length = 0;
            ASSERT_TRUE(!token.isString || jsonUnescape(out, sizeof out, &length, token));
            found += token.isString ? "'" + std::string(out, length) + "'" : std::string(token.start, token.length);
            found += '@' + std::to_string(token.line) + ' ';
        }
        if (size == document.size()) {
            EXPECT_EQ(found, "'A\\\"/\b\f\n\r\tq\xE2\x82\xAC\xF0\xA0\x80\x80\0.'@1 -1.5e+3@1 '-1'@3 2@3 "s);
        }
    }
    for (const std::string bad : {"\\ud800", "\\udc00", "\\ud800\\u0041", "\\ud800\\ud800", "\\ud8", "\\u00g0", "\\",
                                  "\\ud800\\udc0", "four+", "\\u20ac\\u20ac"}) {
        char out[4];
        std::uint32_t length = 0;
        EXPECT_FALSE(jsonUnescape(out, 4, &length, {bad.data(), static_cast<std::uint32_t>(bad.size()), 1, true}))
            << bad;
    }
}

} // namespace
} // namespace toolbelt::test
