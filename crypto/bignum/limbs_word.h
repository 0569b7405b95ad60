// Remainders by one word: the kernels of trial division and of the small-prime table.
//
// 64 by 32 bits is what the processor's own instruction divides; left to itself the 32-bit compiler calls a routine for
// 64 by 64 bits, several times slower.
#pragma once

#include "crypto/bignum/limbs.h"

namespace toolbelt::limbs {

// (high 2^32 + low) mod d, for high below d.
inline std::uint32_t remainderWide(std::uint32_t high, std::uint32_t low, std::uint32_t d) noexcept
{
#if defined(__i386__)
    std::uint32_t quotient, rest;
    __asm__("divl %4" : "=a"(quotient), "=d"(rest) : "a"(low), "d"(high), "r"(d) : "cc");
    return rest;
#else
    return static_cast<std::uint32_t>((std::uint64_t{high} << 32 | low) % d);
#endif
}

// a mod d, in one pass over the words, for d above 0.
inline std::uint32_t remainderByWord(const Limb* a, std::size_t n, std::uint32_t d) noexcept
{
    std::uint32_t rest = 0;
    for (const Word* word = words(a) + 2 * n; word != words(a);) rest = remainderWide(rest, *--word, d);
    return rest;
}

// a b mod d, for a and b below d.
inline std::uint32_t multiplyModWord(std::uint32_t a, std::uint32_t b, std::uint32_t d) noexcept
{
    const std::uint64_t product = std::uint64_t{a} * b;
    return remainderWide(static_cast<std::uint32_t>(product >> 32), static_cast<std::uint32_t>(product), d);
}

} // namespace toolbelt::limbs
