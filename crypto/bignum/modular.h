// Arithmetic modulo a number: products, powers, greatest common divisors and inverses.
// Statuses are those of crypto/bignum/status.h. A modulus of 0 is BN_E_RANGE. Every operation may alias. Timing depends
// on the values, exponents included.
#pragma once

#include <cstdint>

#include "crypto/bignum/bignum.h"

namespace toolbelt {

// A number with a sign: what the extended Euclidean algorithm computes on.
struct SignedBigNum
{
    BigNum value;
    std::uint8_t negative = 0; // 1: below zero
};

// result = a * b mod n.
[[nodiscard]] TB_API Status bnModMultiply(BigNum& result, const BigNum& a, const BigNum& b, const BigNum& n);

// result = base^exponent mod modulus. Odd moduli of 32 bits and more take Montgomery's method with a fixed window of
// six bits; smaller and even ones, and all when forcePlain is set, take binary square-and-multiply. Both give 1 for
// exponent 0.
[[nodiscard]] TB_API Status bnModExp(BigNum& result, const BigNum& base, const BigNum& exponent, const BigNum& modulus,
                                     bool forcePlain = false);

// result = a^x * b^y mod modulus. Faster than two powers when x and y are short.
[[nodiscard]] Status bnModExpPair(BigNum& result, const BigNum& a, const BigNum& x, const BigNum& b, const BigNum& y,
                                  const BigNum& modulus);

// The greatest common divisor; that of a and 0 is a.
[[nodiscard]] TB_API Status bnGcd(BigNum& result, const BigNum& a, const BigNum& b);

// x and y (may be null) with a * x + m * y = 1. BN_E_RANGE when a or m is 0, BN_E_NO_INVERSE when they have a common
// factor.
[[nodiscard]] TB_API Status bnExtendedGcd(SignedBigNum& x, SignedBigNum* y, const BigNum& a, const BigNum& m);

// result = 1/a mod m, in 0..m-1. Fails as bnExtendedGcd does.
[[nodiscard]] TB_API Status bnModInverse(BigNum& result, const BigNum& a, const BigNum& m);

} // namespace toolbelt
