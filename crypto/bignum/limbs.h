// Limb kernels: free functions over arrays of 64-bit limbs, least significant first, with explicit lengths.
//
// Nothing here allocates, fails, or knows about records; callers provide the room and, where a function names it, the
// scratch. Unless said otherwise a result may be the same array as an operand, but may not overlap one partly.
// Multiplication and division work on the 32-bit halves of the limbs: 32 x 32 to 64 bits is the widest product the
// 32-bit target has.
#pragma once

#include <cstddef>
#include <cstdint>

namespace toolbelt::limbs {

using Limb = std::uint64_t;
// Half a limb, low half first in memory. It may look into an array of limbs.
using Word = std::uint32_t __attribute__((may_alias));

inline const Word* words(const Limb* a) noexcept
{
    return reinterpret_cast<const Word*>(a);
}
inline Word* words(Limb* a) noexcept
{
    return reinterpret_cast<Word*>(a);
}

// The number of limbs without the leading zeros; 0 for zero.
inline std::size_t significant(const Limb* a, std::size_t n) noexcept
{
    while (n > 0 && a[n - 1] == 0) --n;
    return n;
}

// -1, 0 or +1. Leading zeros do not count.
int compare(const Limb* a, std::size_t na, const Limb* b, std::size_t nb) noexcept;

// ---- sums and shifts

// r[0..na) = a + b, na >= nb. Returns the carry, 0 or 1.
Limb add(Limb* r, const Limb* a, std::size_t na, const Limb* b, std::size_t nb) noexcept;
// r[0..na) = a - b, na >= nb. Returns the borrow, 0 or 1.
Limb subtract(Limb* r, const Limb* a, std::size_t na, const Limb* b, std::size_t nb) noexcept;
// r[0..n) = a << bits, bits below 64. Returns what was shifted out at the top. r may lie above a.
Limb shiftLeft(Limb* r, const Limb* a, std::size_t n, unsigned bits) noexcept;
// r[0..n) = a >> bits, bits below 64. r may lie below a.
void shiftRight(Limb* r, const Limb* a, std::size_t n, unsigned bits) noexcept;

// ---- multiply-accumulate, on words

// r[0..n) += a * w. Returns the word carried out at the top.
Word multiplyAdd(Word* r, const Word* a, std::size_t n, Word w) noexcept;

// ---- products

// r[0..na + nb) = a * b. r overlaps neither operand; scratch holds multiplyScratch limbs for these lengths or longer
// ones.
void multiply(Limb* r, const Limb* a, std::size_t na, const Limb* b, std::size_t nb, Limb* scratch) noexcept;
std::size_t multiplyScratch(std::size_t na, std::size_t nb) noexcept;
// r[0..2n) = a * a. r does not overlap a; scratch holds multiplyScratch(n, n) limbs.
void square(Limb* r, const Limb* a, std::size_t n, Limb* scratch) noexcept;

// ---- division

// Long division by a normalised divisor: v[0..nv) has its top bit set, u[0..nu + 1) has u[nu] < v[nv - 1] or is smaller
// than v in its upper nv limbs, nu >= nv >= 1. u becomes the remainder (its upper limbs zero), q[0..nu - nv + 1) the
// quotient.
void divide(Limb* q, Limb* u, std::size_t nu, const Limb* v, std::size_t nv) noexcept;

} // namespace toolbelt::limbs
