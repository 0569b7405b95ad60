// The vector tiers of the Montgomery product: numbers in short digits, a lane each (the redundant radix of Gueron and
// Krasnov, Software implementation of modular exponentiation, using advanced vector instructions architectures).
//
// A value has D digits of w bits, least significant first, each in a 64-bit lane; zeros fill the last vector. A lane
// sums all products of its column without a carry.
//
// Narrow digits are shorter than the 32 bits that a lane multiplies, and D is a multiple of four. A digit may exceed w
// bits a little, what is above it being carried later. Values are below 2 n c.
//
// Wide digits have the 52 bits that a lane multiplies; the two halves of a product go to neighbouring columns. No digit
// exceeds them. Values are below 4 n.
//
// Products are formed modulo n c, where c = -1/n mod 2^w. As n c = -1 modulo 2^w, the multiple of n c that clears a
// digit is that digit itself, and it only has to be added as a multiple of n c + 1, whose lowest digit is 0.
//
// With R = 2^(64 k) a value in Montgomery form is kept here times 2^(w D - 64 k), modulo n: the product of two such
// values, divided by 2^(w D), is again the product's Montgomery form in that scale.
#pragma once

#include "crypto/bignum/limbs.h"

namespace toolbelt {

using Digit = std::uint64_t;

struct DigitModulus
{
    std::size_t digits = 0;        // D
    unsigned bits = 0;             // w
    const Digit* spread = nullptr; // the modulus as the kernel loads it; aligned to a vector
    Digit* work = nullptr;         // aligned to a vector
};

// Narrow digits. spread: for each vector of n c + 1 from digit 4 on, the vectors that begin 0, 1, 2 and 3 digits before
// it, 4 D digits; behind them, each with a zero digit after it: its digits 1 to 3, 2^w - 1, and w. work: sums of all
// columns, the four digits last cleared and what they carry, an operand spread out.
inline constexpr std::size_t narrowWork(std::size_t digits) noexcept
{
    return 2 * digits + 4 + 8 + 4 * (digits + 4);
}
inline constexpr std::size_t narrowConstants = 10;
inline constexpr int DIGIT_MASK = 3, DIGIT_BITS = 4;

// Wide digits. spread: the vectors of (n c + 1) / 2^w, those of n, and c. work: a vector of columns for each vector
// of n, and two more.
inline constexpr unsigned wideDigit = 52;

struct MontgomeryKernel
{
    std::size_t lanes; // digits in a vector
    bool wide;
    // r = a b / 2^(w D) modulo n, r, a and b being values as above. r may be a or b; the same value given twice is
    // squared.
    void (*product)(Digit* r, const Digit* a, const Digit* b, const DigitModulus& modulus) noexcept;
};

extern const MontgomeryKernel montgomerySse2, montgomeryAvx2, montgomeryIfma;

} // namespace toolbelt
