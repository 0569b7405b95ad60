// Long division on limbs (Knuth, The Art of Computer Programming, volume 2, 4.3.1, algorithm D), with quotient limbs
// estimated by a reciprocal of the divisor's top limb (Moller and Granlund, Improved division by invariant integers).
//
// Why the estimate is at most two too large: the divisor's top bit is set, so dropping all but its top limb raises the
// quotient of the upper limbs by less than 2 + 2/2^64 (Knuth, theorem B). Looking at the second limb removes the error
// but for a chance of about 2/2^64; then the product taken off is one divisor too large, and one is added back.
//
// Of a long divisor the upper limbs are divided by first, for a block of quotient limbs. What the block takes from the
// lower limbs is one short product then, which the vector kernels form faster than the rows it consists of. For the
// same reason as above a block is at most two too large. Where several blocks follow each other, the upper limbs are
// divided by a reciprocal as well: a block is a digit then, of 512 bits.
#include <algorithm>

#include "crypto/base/heap.h"
#include "crypto/bignum/branch_observer.h"
#include "crypto/bignum/columns.h"
#include "crypto/bignum/limbs.h"

namespace toolbelt::limbs {
namespace {

// Quotient limbs of a block, and limbs of the divisor that find it. Measured on 2048-bit divisors: four take a quarter
// more time, sixteen a tenth.
constexpr std::size_t blockLimbs = 8;
// Quotient limbs from which on the inverse of a block pays: it takes as long as a block without it, and with it a block
// takes half of that.
constexpr std::size_t inversePays = 3 * blockLimbs;

struct Wide
{
    Limb high, low;
};

Wide multiplyWide(Limb a, Limb b) noexcept
{
    const std::uint64_t a0 = static_cast<Word>(a), a1 = a >> 32, b0 = static_cast<Word>(b), b1 = b >> 32;
    const std::uint64_t low = a0 * b0, cross = a1 * b0, other = a0 * b1;
    // Three summands below 2^32 and a product of at most (2^32 - 1)^2 stay below 2^64.
    const std::uint64_t middle = (low >> 32) + static_cast<Word>(cross) + other;
    return {a1 * b1 + (cross >> 32) + (middle >> 32), middle << 32 | static_cast<Word>(low)};
}

// floor((2^128 - 1) / d) - 2^64, for d with its top bit set: 2^64 (2^64 - 1 - d) + 2^64 - 1 divided by d, two 32-bit
// digits after one another. The library's 64-bit division is slow, but runs only here, once a division.
Limb reciprocal(Limb d) noexcept
{
    const std::uint64_t d1 = d >> 32, d0 = static_cast<Word>(d);
    Limb rest = ~d;
    Limb quotient = 0;
    for (int digit = 0; digit < 2; ++digit) {
        std::uint64_t q = rest / d1;
        std::uint64_t r = rest - q * d1;
        // q is at most two too large; rest is below d, so it is at most 2^32 + 1, and its product with d0 below 2^64.
        while (q * d0 > (r << 32 | 0xFFFFFFFFu)) {
            --q;
            r += d1;
            if (r >> 32 != 0) break;
        }
        quotient = quotient << 32 | q;
        rest = (rest << 32 | 0xFFFFFFFFu) - q * d;
    }
    return quotient;
}

// (high, low) / d for high < d; rest becomes the remainder.
Limb divideWide(Limb high, Limb low, Limb d, Limb inverse, Limb& rest) noexcept
{
    Wide q = multiplyWide(high, inverse);
    q.low += low;
    q.high += high + (q.low < low) + 1;
    rest = low - q.high * d;
    if (rest > q.low) {
        observe(Branch::wideLowered);
        --q.high;
        rest += d;
    }
    if (rest >= d) {
        observe(Branch::wideRaised);
        ++q.high;
        rest -= d;
    }
    return q.high;
}

// The limb of the quotient of u by v, where u points at the top of nv + 1 limbs and v at the top of nv >= 2: the result
// is right, or one too large.
Limb estimate(const Limb* u, const Limb* v, Limb inverse) noexcept
{
    const Limb top = v[0];
    Limb q, rest;
    if (u[0] >= top) { // equal: the quotient limb cannot be larger than all ones
        observe(Branch::quotientAllOnes);
        q = ~Limb{0};
        rest = u[-1] + top;
        if (rest < top) return q;
    } else {
        q = divideWide(u[0], u[-1], top, inverse, rest);
    }
    Wide second = multiplyWide(q, v[-1]);
    while (second.high > rest || (second.high == rest && second.low > u[-2])) {
        observe(Branch::quotientLowered);
        --q;
        rest += top;
        if (rest < top) break;
        second.high -= second.low < v[-1];
        second.low -= v[-1];
    }
    return q;
}

// u[0..n) -= v * w. Returns the word borrowed at the top.
Word multiplySubtract(Word* u, const Word* v, std::size_t n, Word w) noexcept
{
    Word borrow = 0;
#pragma GCC unroll 4
    for (std::size_t i = 0; i < n; ++i) {
#if defined(__i386__)
        // Left to itself the compiler needs twice the instructions.
        Word low = w, high;
        __asm__("mull %2" : "+a"(low), "=d"(high) : "m"(v[i]) : "cc");
        __asm__("addl %3, %0\n\tadcl $0, %1\n\tsubl %0, %2\n\tadcl $0, %1"
                : "+&r"(low), "+&r"(high), "+m"(u[i])
                : "r"(borrow)
                : "cc");
        borrow = high;
#else
        const std::uint64_t taken = std::uint64_t{v[i]} * w + borrow;
        borrow = static_cast<Word>(taken >> 32) + (u[i] < static_cast<Word>(taken));
        u[i] -= static_cast<Word>(taken);
#endif
    }
    return borrow;
}

// u[0..nv + 1) -= v * q. True when that went below zero.
bool takeMultiple(Limb* u, const Limb* v, std::size_t nv, Limb q) noexcept
{
    const Limb low = multiplySubtract(words(u), words(v), 2 * nv, static_cast<Word>(q));
    bool below = u[nv] < low;
    u[nv] -= low;
    const Limb high = multiplySubtract(words(u) + 1, words(v), 2 * nv, static_cast<Word>(q >> 32));
    below |= u[nv] >> 32 < high;
    u[nv] -= high << 32;
    return below;
}

// q[0..count) = u[0..nv + count) / v, limb after limb, for u smaller than v in its upper nv limbs; u becomes the
// remainder.
void divideByLimbs(Limb* q, std::size_t count, Limb* u, const Limb* v, std::size_t nv, Limb inverse) noexcept
{
    for (std::size_t j = count; j-- > 0;) {
        Limb digit = estimate(u + j + nv, v + nv - 1, inverse);
        if (takeMultiple(u + j, v, nv, digit)) {
            observe(Branch::quotientAddBack);
            --digit;
            u[j + nv] += add(u + j, u + j, nv, v, nv);
        }
        q[j] = digit;
    }
}

// What division by the reciprocal of a block needs besides its operands; B = 2^512.
struct BlockDivisor
{
    Limb inverse[blockLimbs]; // floor((B^2 - 1) / d) - B, for a block d with its top bit set
    Limb guess[2 * blockLimbs], taken[2 * blockLimbs];
};

void findInverse(BlockDivisor& divisor, const Limb* d, Limb inverse) noexcept
{
    Limb* const u = divisor.guess; // B^2 - 1 - B d
    for (std::size_t i = 0; i < blockLimbs; ++i) {
        u[i] = ~Limb{0};
        u[blockLimbs + i] = ~d[i];
    }
    divideByLimbs(divisor.inverse, blockLimbs, u, d, blockLimbs, inverse);
}

// divideWide on blocks: q = u[0..2 blockLimbs) / d for an upper half of u below d; u becomes the remainder.
void divideWideBlock(Limb* q, Limb* u, const Limb* d, BlockDivisor& divisor) noexcept
{
    constexpr std::size_t n = blockLimbs;
    Limb *const guess = divisor.guess, *const taken = divisor.taken;
    const Limb one = 1;
    multiply(guess, u + n, n, divisor.inverse, n, nullptr);
    add(guess, guess, 2 * n, u, 2 * n);
    add(q, guess + n, n, &one, 1);
    multiply(taken, q, n, d, n, nullptr);
    subtract(u, u, n, taken, n);
    std::fill_n(u + n, n, Limb{0});
    if (compare(u, n, guess, n) > 0) {
        observe(Branch::blockWideLowered);
        subtract(q, q, n, &one, 1);
        add(u, u, n, d, n);
    }
    if (compare(u, n, d, n) >= 0) {
        observe(Branch::blockWideRaised);
        add(q, q, n, &one, 1);
        subtract(u, u, n, d, n);
    }
}

// u[0..nu) -= v * q for a q of at most blockLimbs. Returns how often that went below zero.
Limb takeProduct(Limb* u, std::size_t nu, const Limb* v, std::size_t nv, const Limb* q, std::size_t nq) noexcept
{
    Limb product[columnsLimit + blockLimbs];
    const WipeOnExit guard(product);
    Limb below = 0;
    for (std::size_t i = 0; i < nv; i += columnsLimit) {
        const std::size_t n = std::min(nv - i, columnsLimit);
        multiply(product, v + i, n, q, nq, nullptr);
        below += subtract(u + i, u + i, nu - i, product, n + nq);
    }
    return below;
}

// The same for count <= blockLimbs limbs of the quotient from blockLimbs limbs of the divisor, and then from the
// others, by which the quotient may turn out to be too large by one or two. wide belongs to the divisor's upper
// limbs, or is null.
void divideByBlock(Limb* q, std::size_t count, Limb* u, const Limb* v, std::size_t nv, Limb inverse,
                   BlockDivisor* wide) noexcept
{
    const std::size_t low = nv - blockLimbs;
    if (wide && count == blockLimbs)
        divideWideBlock(q, u + low, v + low, *wide);
    else
        divideByLimbs(q, count, u + low, v + low, blockLimbs, inverse);
    for (Limb below = takeProduct(u, nv, v, low, q, count); below != 0;) {
        observe(Branch::blockLowered);
        const Limb one = 1;
        subtract(q, q, count, &one, 1);
        below -= add(u, u, nv, v, nv);
    }
}

// q[0..left) = u[0..nv + left) / v like divideByLimbs, block after block, for nv >= 2 blockLimbs.
void divideByBlocks(Limb* q, std::size_t left, Limb* u, const Limb* v, std::size_t nv, Limb inverse) noexcept
{
    const std::size_t top = nv - blockLimbs;
    BlockDivisor wide;
    const WipeOnExit guard(wide);
    const bool isWide = left >= inversePays;
    if (isWide) findInverse(wide, v + top, inverse);
    while (left != 0) {
        if (compare(u + left + top, blockLimbs, v + top, blockLimbs) < 0) {
            const std::size_t step = std::min(left, blockLimbs);
            left -= step;
            divideByBlock(q + left, step, u + left, v, nv, inverse, isWide ? &wide : nullptr);
        } else { // the same upper limbs as the divisor: they alone would give a quotient of more than a block
            observe(Branch::blockRefused);
            --left;
            divideByLimbs(q + left, 1, u + left, v, nv, inverse);
        }
    }
}

} // namespace

void divide(Limb* q, Limb* u, std::size_t nu, const Limb* v, std::size_t nv) noexcept
{
    const Limb inverse = reciprocal(v[nv - 1]);
    if (nv == 1) {
        Limb rest = u[nu];
        for (std::size_t j = nu; j-- > 0;) {
            q[j] = divideWide(rest, u[j], v[0], inverse, rest);
            u[j + 1] = 0;
        }
        u[0] = rest;
        return;
    }
    std::size_t left = nu - nv + 1;
    if (u[nu] == 0) { // below 2 v
        --left;
        q[left] = compare(u + left, nv, v, nv) >= 0;
        if (q[left]) subtract(u + left, u + left, nv, v, nv);
    }
    if (nv >= 2 * blockLimbs)
        divideByBlocks(q, left, u, v, nv, inverse);
    else
        divideByLimbs(q, left, u, v, nv, inverse);
}

} // namespace toolbelt::limbs
