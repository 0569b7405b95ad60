#include "json/json_number.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "crypto/base/heap.h"

namespace toolbelt {
namespace {

// Exponents are cut here: no text that fits in memory has as many digits.
constexpr std::int64_t EXPONENT_LIMIT = std::int64_t(1) << 40;

// While it lives, x87 arithmetic rounds to a double's 53 bits, to the nearest: the standard library's multiplications
// of doubles would be rounded twice otherwise, and sometimes to a neighbour. The host may have set anything.
class DoublePrecision
{
public:
#ifdef __i386__
    DoublePrecision()
    {
        constexpr std::uint16_t PRECISION_AND_ROUNDING = 0x0F00, DOUBLE_NEAREST = 0x0200;
        __asm__ __volatile__("fnstcw %0" : "=m"(before_));
        load(static_cast<std::uint16_t>((before_ & ~PRECISION_AND_ROUNDING) | DOUBLE_NEAREST));
    }
    ~DoublePrecision()
    {
        load(before_);
    }
    DoublePrecision(const DoublePrecision&) = delete;
    DoublePrecision& operator=(const DoublePrecision&) = delete;

private:
    static void load(std::uint16_t word)
    {
        __asm__ __volatile__("fldcw %0" : : "m"(word) : "memory");
    }
    std::uint16_t before_;
#else
    DoublePrecision() {}
#endif
};

std::from_chars_result readDouble(const char* text, const char* end, double& number)
{
    const DoublePrecision precision;
    return std::from_chars(text, end, number);
}

template <typename Number>
std::uint32_t convert(wchar_t (&text)[JSON_NUMBER_SIZE], Number number)
{
    char digits[JSON_NUMBER_SIZE];
    const WipeOnExit guard(digits);
    const auto [end, error] = std::to_chars(digits, digits + JSON_NUMBER_SIZE, number);
    if (error != std::errc()) return 0;
    std::copy(digits, end, text);
    return static_cast<std::uint32_t>(end - digits);
}

// Whether a number that no double is near is below all of them. Only the power of ten of its first digit matters.
bool isTiny(const char* at, const char* end)
{
    std::int64_t power = 0;
    bool point = false, significant = false;
    for (; at != end && *at != 'e' && *at != 'E'; ++at) {
        if (*at == '.') {
            point = true;
        } else if (*at != '-') {
            significant = significant || *at != '0';
            if (significant && !point) ++power;
            if (!significant && point) --power;
        }
    }
    if (at == end) return power < 0;
    const bool negative = ++at != end && *at == '-';
    std::int64_t exponent = 0;
    for (; at != end; ++at)
        if (*at >= '0' && *at <= '9') exponent = std::min(exponent * 10 + (*at - '0'), EXPONENT_LIMIT);
    return power + (negative ? -exponent : exponent) < 0;
}

} // namespace

std::uint32_t jsonNumberText(wchar_t (&text)[JSON_NUMBER_SIZE], std::int64_t number)
{
    return convert(text, number);
}

std::uint32_t jsonNumberText(wchar_t (&text)[JSON_NUMBER_SIZE], double number)
{
    if (std::isfinite(number)) return convert(text, number);
    std::copy_n(L"null", 4, text);
    return 4;
}

JsonNumberResult jsonReadNumber(JsonValue& value, const char* text, std::uint32_t length)
{
    const char* end = text + length;
    if (std::none_of(text, end, [](char c) { return c == '.' || c == 'e' || c == 'E'; })) {
        std::int64_t integer = 0;
        const auto [stop, error] = std::from_chars(text, end, integer);
        if (error == std::errc() && stop == end && (integer != 0 || *text != '-')) {
            value.type = JSON_INTEGER;
            value.integer = integer;
            return JsonNumberResult::ok;
        }
    }
    double number = 0;
    const auto [stop, error] = readDouble(text, end, number);
    if (error == std::errc::invalid_argument || stop != end || !std::isfinite(number))
        return JsonNumberResult::malformed;
    if (error != std::errc()) {
        if (!isTiny(text, end)) return JsonNumberResult::outOfRange;
        number = *text == '-' ? -0.0 : 0.0;
    }
    value.type = JSON_DOUBLE;
    value.number = number;
    return JsonNumberResult::ok;
}

} // namespace toolbelt
