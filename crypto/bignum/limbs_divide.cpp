// Long division on limbs (Knuth, The Art of Computer Programming, volume 2, 4.3.1, algorithm D), with quotient limbs
// estimated by a reciprocal of the divisor's top limb (Moller and Granlund, Improved division by invariant integers).
//
// Why the estimate is at most two too large: the divisor's top bit is set, so dropping all but its top limb raises the
// quotient of the upper limbs by less than 2 + 2/2^64 (Knuth, theorem B). Looking at the second limb removes the error
// but for a chance of about 2/2^64; then the product taken off is one divisor too large, and one is added back.
#include "crypto/bignum/branch_observer.h"
#include "crypto/bignum/limbs.h"

namespace toolbelt::limbs {
namespace {

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

} // namespace

void divide(Limb* q, Limb* u, std::size_t nu, const Limb* v, std::size_t nv) noexcept
{
    const Limb inverse = reciprocal(v[nv - 1]);
    if (nv == 1) {
        Limb rest = u[nu];
        for (std::size_t j = nu; j-- > 0;) {
            const Limb digit = divideWide(rest, u[j], v[0], inverse, rest);
            u[j + 1] = 0;
            if (q) q[j] = digit;
        }
        u[0] = rest;
        return;
    }
    for (std::size_t j = nu - nv + 1; j-- > 0;) {
        Limb digit = estimate(u + j + nv, v + nv - 1, inverse);
        if (takeMultiple(u + j, v, nv, digit)) {
            observe(Branch::quotientAddBack);
            --digit;
            u[j + nv] += add(u + j, u + j, nv, v, nv);
        }
        if (q) q[j] = digit;
    }
}

} // namespace toolbelt::limbs
