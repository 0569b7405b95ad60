// Numbers as JSON texts: exact, and safe on what is cut short.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "tests/support/vectors.h"
#include "json/json_number.h"

namespace toolbelt::test {
namespace {

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

} // namespace
} // namespace toolbelt::test
