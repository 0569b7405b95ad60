// Numbers as text. Digits of a double come from std::to_chars: correctly rounded, without locale or memory. Its exact
// decimal expansion has at most 1074 digits behind the point and 767 significant ones, so that every digit beyond
// maxDigits is a zero and is written without being computed.
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "Includes/stringFuncs/format_output.h"
#include "crypto/base/heap.h"

namespace toolbelt {
namespace {

constexpr std::int32_t maxDigits = 1100;
constexpr std::size_t maxText = 309 + 1 + maxDigits + 16; // 309 digits before the point at most

struct Prefix
{
    char text[3] = {};
    std::int32_t size = 0;

    void add(char c) noexcept { text[size++] = c; }
};

void layOut(FormatOutput& output, const FormatDirective& directive, const Prefix& prefix, const FormatPieces& body,
            bool zeroPadded) noexcept
{
    const std::int64_t padding = directive.width - prefix.size - body.total();
    const bool zeros = zeroPadded && !directive.left;
    if (!directive.left && !zeros) output.fill(L' ', padding);
    output.text(prefix.text, prefix.size);
    if (zeros) output.fill(L'0', padding);
    body.write(output);
    if (directive.left) output.fill(L' ', padding);
}

Prefix signOf(const FormatDirective& directive, bool negative) noexcept
{
    Prefix prefix;
    if (negative)
        prefix.add('-');
    else if (directive.plus)
        prefix.add('+');
    else if (directive.blank)
        prefix.add(' ');
    return prefix;
}

// Writes the digits up to end and returns the first.
char* digitsOf(std::uint64_t value, unsigned base, const char* digits, char* end) noexcept
{
    for (; value != 0; value /= base) *--end = digits[value % base];
    return end;
}

constexpr const char* lowerDigits = "0123456789abcdef";
constexpr const char* upperDigits = "0123456789ABCDEF";

// Digits and exponent as d.ddde+dd holds them, the digits moved together.
struct Scientific
{
    char* digits;
    std::int32_t count;
    std::int32_t exponent;
    char* exponentText; // "e+dd"
    std::int32_t exponentSize;
};

Scientific scientific(char (&text)[maxText], double value, std::int32_t digits) noexcept
{
    char* const end = std::to_chars(text, text + maxText, value, std::chars_format::scientific, digits - 1).ptr;
    *end = 0;
    Scientific result = {text, digits, 0, std::strchr(text, 'e'), 0};
    result.exponent = std::atoi(result.exponentText + 1);
    result.exponentSize = static_cast<std::int32_t>(end - result.exponentText);
    if (digits > 1) std::swap(text[0], text[1]), ++result.digits; // over the point
    return result;
}

void addScientific(FormatPieces& body, const FormatDirective& directive, const Scientific& number,
                   std::int64_t zeros) noexcept
{
    body.text(number.digits, 1);
    if (number.count > 1 || zeros > 0 || directive.alternate) body.text(".", 1);
    body.text(number.digits + 1, number.count - 1);
    body.zeros(zeros);
    body.text(number.exponentText, number.exponentSize);
}

void addGeneral(FormatPieces& body, const FormatDirective& directive, Scientific& number,
                std::int64_t precision) noexcept
{
    std::int64_t zeros = precision - number.count;
    if (!directive.alternate) {
        zeros = 0;
        while (number.count > 1 && number.digits[number.count - 1] == '0') --number.count;
    }
    const std::int32_t exponent = number.exponent;
    if (exponent < -4 || exponent >= precision) return addScientific(body, directive, number, zeros);
    if (exponent < 0) {
        body.text("0.", 2);
        body.zeros(-exponent - 1);
        body.text(number.digits, number.count);
    } else {
        const std::int32_t whole = std::min(number.count, exponent + 1);
        body.text(number.digits, whole);
        body.zeros(exponent + 1 - whole);
        if (number.count > whole || directive.alternate) body.text(".", 1);
        body.text(number.digits + whole, number.count - whole);
    }
    body.zeros(zeros);
}

} // namespace

void formatInteger(FormatOutput& output, const FormatDirective& directive, std::uint64_t value) noexcept
{
    const bool isSigned = directive.letter == L'd' || directive.letter == L'i';
    const bool hexadecimal = directive.letter == L'x' || directive.letter == L'X';
    const bool negative = isSigned && static_cast<std::int64_t>(value) < 0;
    if (negative) value = 0 - value;

    char text[24];
    const WipeOnExit guard(text);
    char* const end = text + sizeof text;
    const unsigned base = hexadecimal ? 16 : directive.letter == L'o' ? 8 : 10;
    const char* const first = digitsOf(value, base, directive.letter == L'X' ? upperDigits : lowerDigits, end);

    Prefix prefix;
    if (isSigned) prefix = signOf(directive, negative);
    if (hexadecimal && directive.alternate && value != 0) {
        prefix.add('0');
        prefix.add(directive.letter == L'X' ? 'X' : 'x');
    }
    std::int64_t zeros = (directive.precision < 0 ? 1 : directive.precision) - (end - first);
    if (base == 8 && directive.alternate) zeros = std::max<std::int64_t>(zeros, 1);
    FormatPieces body;
    body.zeros(zeros);
    body.text(first, end - first);
    layOut(output, directive, prefix, body, directive.zero && directive.precision < 0);
}

void formatPointer(FormatOutput& output, const FormatDirective& directive, const void* address) noexcept
{
    char text[24];
    const WipeOnExit guard(text);
    char* const end = text + sizeof text;
    const char* const first = digitsOf(reinterpret_cast<std::uintptr_t>(address), 16, upperDigits, end);
    Prefix prefix;
    prefix.add('0');
    prefix.add('x');
    FormatPieces body;
    body.zeros(static_cast<std::int64_t>(2 * sizeof address) - (end - first));
    body.text(first, end - first);
    layOut(output, directive, prefix, body, false);
}

void formatDouble(FormatOutput& output, const FormatDirective& directive, double value) noexcept
{
    const bool upper = directive.letter == L'E' || directive.letter == L'G';
    const Prefix prefix = signOf(directive, std::signbit(value));
    value = std::fabs(value);
    FormatPieces body;
    if (!std::isfinite(value)) {
        body.text(std::isnan(value) ? (upper ? "NAN" : "nan") : (upper ? "INF" : "inf"), 3);
        return layOut(output, directive, prefix, body, false);
    }
    const std::int32_t precision = directive.precision < 0 ? 6 : directive.precision;
    const std::int32_t computed = std::min(precision, maxDigits);
    char text[maxText];
    const WipeOnExit guard(text);
    if (directive.letter == L'f') {
        const char* const end = std::to_chars(text, text + maxText, value, std::chars_format::fixed, computed).ptr;
        body.text(text, end - text);
        if (precision == 0 && directive.alternate) body.text(".", 1);
        body.zeros(std::int64_t(precision) - computed);
        return layOut(output, directive, prefix, body, directive.zero);
    }
    const bool general = directive.letter == L'g' || directive.letter == L'G';
    Scientific number = scientific(text, value, general ? std::max(computed, 1) : computed + 1);
    if (upper) *number.exponentText = 'E';
    if (general)
        addGeneral(body, directive, number, std::max(precision, 1));
    else
        addScientific(body, directive, number, std::int64_t(precision) - computed);
    layOut(output, directive, prefix, body, directive.zero);
}

} // namespace toolbelt
