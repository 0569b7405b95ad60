// The vector tiers of the Montgomery product: numbers in short digits, a lane each (the redundant radix of Gueron and
// Krasnov, Software implementation of modular exponentiation, using advanced vector instructions architectures).
//
// A value has D digits of w bits, least significant first, each in a 64-bit lane. Digits are shorter than the 32 bits
// that a lane multiplies, so that a lane sums all products of its column without a carry; D is a multiple of four. A
// digit may exceed w bits a little, what is above it being carried later.
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
    const Digit* spread = nullptr; // n c + 1 as the kernel loads it; aligned to 32 bytes
    Digit* work = nullptr;         // digitWork(D) digits, aligned to 32 bytes
};
// Sums of all columns, the four digits last cleared and what they carry, an operand spread out.
inline constexpr std::size_t digitWork(std::size_t digits) noexcept
{
    return 2 * digits + 4 + 8 + 4 * (digits + 4);
}
// Behind the vectors of n c + 1, each with a zero digit after it: its digits 1 to 3, 2^w - 1, and w.
inline constexpr std::size_t digitConstants = 10;
inline constexpr int DIGIT_MASK = 3, DIGIT_BITS = 4;

struct MontgomeryKernel
{
    // Digits in a vector. For each vector of n c + 1 from digit 4 on, spread holds the vectors that begin 0, 1, 2 and 3
    // digits before it: 4 D digits. Constants follow.
    std::size_t lanes;
    // r = a b / 2^(w D) modulo n c, below 2 n c for a and b below 2 n c. r may be a or b; the same value given twice is
    // squared.
    void (*product)(Digit* r, const Digit* a, const Digit* b, const DigitModulus& modulus) noexcept;
};

extern const MontgomeryKernel montgomerySse2, montgomeryAvx2;

} // namespace toolbelt
