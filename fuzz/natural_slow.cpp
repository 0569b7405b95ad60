// Comparison arithmetic by pencil and paper, a byte or a bit at a time.
#include "fuzz/natural.h"

#include <algorithm>

namespace toolbelt::fuzz {
namespace {

// a - b for a not less than b, in place.
void take(Bytes& a, const Bytes& b)
{
    int borrow = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const int digit = a[a.size() - 1 - i] - borrow - (i < b.size() ? b[b.size() - 1 - i] : 0);
        borrow = digit < 0;
        a[a.size() - 1 - i] = static_cast<std::uint8_t>(digit);
    }
    if (!a.empty() && a.front() == 0) a = trimmed(a);
}

} // namespace

Bytes add(const Bytes& a, const Bytes& b)
{
    Bytes result(std::max(a.size(), b.size()) + 1);
    int carry = 0;
    for (std::size_t i = 0; i < result.size(); ++i, carry >>= 8) {
        carry += (i < a.size() ? a[a.size() - 1 - i] : 0) + (i < b.size() ? b[b.size() - 1 - i] : 0);
        result[result.size() - 1 - i] = static_cast<std::uint8_t>(carry);
    }
    return trimmed(result);
}

Bytes subtract(const Bytes& a, const Bytes& b)
{
    Bytes result = trimmed(a);
    take(result, trimmed(b));
    return result;
}

Bytes multiply(const Bytes& a, const Bytes& b)
{
    Bytes result(a.size() + b.size());
    for (std::size_t i = a.size(); i-- > 0;) {
        std::uint32_t carry = 0;
        for (std::size_t j = b.size(); j-- > 0; carry >>= 8) {
            carry += result[i + j + 1] + std::uint32_t{a[i]} * b[j];
            result[i + j + 1] = static_cast<std::uint8_t>(carry);
        }
        result[i] = static_cast<std::uint8_t>(carry);
    }
    return trimmed(result);
}

Bytes divide(const Bytes& a, const Bytes& n, Bytes& remainder)
{
    const Bytes divisor = trimmed(n);
    Bytes quotient(a.size()), rest;
    for (std::size_t i = 0; i < a.size(); ++i) {
        rest.push_back(a[i]);
        for (rest = trimmed(rest); !isLess(rest, divisor); ++quotient[i]) take(rest, divisor);
    }
    remainder = rest;
    return trimmed(quotient);
}

Bytes power(const Bytes& base, const Bytes& exponent, const Bytes& modulus)
{
    Bytes result = modulo({1}, modulus);
    for (std::size_t bit = 0; bit < 8 * exponent.size(); ++bit) {
        result = modulo(multiply(result, result), modulus);
        if (exponent[bit / 8] >> (7 - bit % 8) & 1) result = modulo(multiply(result, base), modulus);
    }
    return result;
}

Bytes gcd(const Bytes& a, const Bytes& b)
{
    Bytes x = trimmed(a), y = trimmed(b);
    while (!y.empty()) {
        x = modulo(x, y);
        std::swap(x, y);
    }
    return x;
}

} // namespace toolbelt::fuzz
