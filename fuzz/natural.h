// Natural numbers as big-endian bytes without leading zeros, empty for zero: their form, from and to the library's, and
// arithmetic to compare with.
#pragma once

#include "crypto/bignum/bignum.h"
#include "fuzz/target.h"

namespace toolbelt::fuzz {

Bytes trimmed(const Bytes& number);
bool isLess(const Bytes& a, const Bytes& b);
std::uint32_t bitLength(const Bytes& a);
inline Bytes ofWord(std::uint32_t word)
{
    return trimmed({std::uint8_t(word >> 24), std::uint8_t(word >> 16), std::uint8_t(word >> 8), std::uint8_t(word)});
}

// From and to the library's numbers.
void load(BigNum& number, const Bytes& bytes);
Bytes valueOf(const BigNum& number);
// With the bit count in front.
Bytes prefixed(const Bytes& number);

// By GMP, and only where it is linked.
Bytes add(const Bytes& a, const Bytes& b);
// a is not less than b.
Bytes subtract(const Bytes& a, const Bytes& b);
Bytes multiply(const Bytes& a, const Bytes& b);
// n is not zero.
Bytes divide(const Bytes& a, const Bytes& n, Bytes& remainder);
// exponent and modulus are not zero.
Bytes power(const Bytes& base, const Bytes& exponent, const Bytes& modulus);
Bytes gcd(const Bytes& a, const Bytes& b);
inline Bytes modulo(const Bytes& a, const Bytes& n)
{
    Bytes remainder;
    divide(a, n, remainder);
    return remainder;
}

} // namespace toolbelt::fuzz
