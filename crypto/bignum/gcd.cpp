// Greatest common divisors by Euclid's algorithm, plain and extended, and the modular inverse.
//
// The extended one takes many of Euclid's steps at a time (Lehmer; Knuth, The Art of Computer Programming, volume 2,
// 4.5.2, algorithm L): their quotients are found from the upper 64 bits of the two remainders, for as long as these
// bits are enough to tell them, and are applied together, in one pass over each pair of numbers.
#include <algorithm>
#include <bit>
#include <utility>

#include "crypto/base/heap.h"
#include "crypto/bignum/modular.h"
#include "crypto/bignum/operands.h"

namespace toolbelt {
namespace {

using limbs::Limb;

void swap(BigNum& a, BigNum& b) noexcept
{
    std::swap(a.count, b.count);
    std::swap(a.limbs, b.limbs);
    std::swap(a.borrowed, b.borrowed);
}

// Some of Euclid's steps at once: the remainders r and s become +-(u0 r - v0 s) and +-(v1 s - u1 r).
struct Steps
{
    // All below 2^31, so that the sum and the difference of two products of a word fit 64 bits with a carry.
    std::uint32_t u0 = 1, v0 = 0, u1 = 0, v1 = 1;
    bool odd = false; // their number: then the signs are turned

    bool any() const noexcept { return u1 != 0; }

    // Takes steps on x and y, the upper parts of r and s, x >= y. Unless they are the whole of r and s, a remainder z
    // found from them may be off by less than its larger factor, v: it is that of r and s too when it stays at least 0
    // and below the one before in spite of that (Collins; Jebelean).
    void take(std::uint64_t x, std::uint64_t y, bool whole) noexcept
    {
        while (y != 0) {
            std::uint64_t quotient = 1, z = x - y;
            if (z >= y) { // most quotients are small, and division is slow
                quotient = 2;
                z -= y;
                if (z >= y) {
                    quotient = x / y;
                    z = x - quotient * y;
                }
            }
            if (quotient >> 31 != 0) return;
            const std::uint64_t u = u0 + quotient * u1, v = v0 + quotient * v1;
            if ((u | v) >> 31 != 0) return;
            if (!whole && (z < v || y - z < v + v1)) return;
            x = y;
            y = z;
            u0 = u1;
            u1 = static_cast<std::uint32_t>(u);
            v0 = v1;
            v1 = static_cast<std::uint32_t>(v);
            odd = !odd;
        }
    }

    // The steps on the remainders, of n limbs.
    void applyToRemainders(Limb* r, Limb* s, std::size_t n) const noexcept
    {
        limbs::Word *rw = limbs::words(r), *sw = limbs::words(s);
        std::int64_t first = 0, second = 0; // shifts keep the sign
        for (std::size_t i = 0; i < 2 * n; ++i) {
            const std::uint64_t a = rw[i], b = sw[i];
            const auto one = static_cast<std::int64_t>(u0 * a - v0 * b),
                       two = static_cast<std::int64_t>(v1 * b - u1 * a);
            first += odd ? -one : one;
            second += odd ? -two : two;
            rw[i] = static_cast<limbs::Word>(first);
            sw[i] = static_cast<limbs::Word>(second);
            first >>= 32;
            second >>= 32;
        }
    }

    // The steps on their coefficients, of n limbs, where opposite signs make sums of magnitudes.
    void applyToCoefficients(Limb* previous, Limb* current, std::size_t n) const noexcept
    {
        limbs::Word *pw = limbs::words(previous), *cw = limbs::words(current);
        std::uint64_t first = 0, second = 0;
        for (std::size_t i = 0; i < 2 * n; ++i) {
            const std::uint64_t a = pw[i], b = cw[i];
            first += u0 * a + v0 * b;
            second += u1 * a + v1 * b;
            pw[i] = static_cast<limbs::Word>(first);
            cw[i] = static_cast<limbs::Word>(second);
            first >>= 32;
            second >>= 32;
        }
    }
};

// Two successive remainders of a and m, and the coefficients of a in them, which have opposite signs.
class Remainders
{
public:
    Status start(const BigNum& a, const BigNum& m) noexcept
    {
        const std::size_t ofA = Operand(a).count, ofM = Operand(m).count;
        for (BigNum* number : {&r_, &s_})
            if (const Status status = detail::resizeLimbs(*number, std::max(ofA, ofM))) return status;
        // A coefficient is at most m.
        for (BigNum* number : {&previous_, &current_})
            if (const Status status = detail::resizeLimbs(*number, ofM + 1)) return status;
        previous_.limbs[0] = 1;
        const Status status = bnCopy(r_, a);
        return status == STATUS_OK ? bnCopy(s_, m) : status;
    }

    bool atEnd() const noexcept { return bnCompareWord(s_, 0) == 0; }
    // Then: the divisor, and its coefficient.
    const BigNum& divisor() const noexcept { return r_; }
    Status coefficient(SignedBigNum& x) const noexcept
    {
        x.negative = negative_ && bnCompareWord(previous_, 0) != 0;
        return bnCopy(x.value, previous_);
    }

    Status advance() noexcept
    {
        const Operand r(r_), s(s_);
        const std::size_t n = r.count;
        Steps steps; // of secret numbers, as a rule
        const WipeOnExit guard(steps);
        // Else s is the larger one, or so much smaller that r's upper bits have none of it.
        if (s.count <= n && n <= s.count + 1 && s_.limbs[n - 1] <= r.data[n - 1]) {
            const auto shift = static_cast<unsigned>(std::countl_zero(r.data[n - 1]));
            const std::uint64_t x = upper(r_.limbs, n, shift), y = upper(s_.limbs, n, shift);
            if (x >= y) steps.take(x, y, n == 1);
        }
        if (!steps.any()) return advanceByDivision();
        const auto held = std::max(Operand(previous_).count, Operand(current_).count) + 1;
        steps.applyToRemainders(r_.limbs, s_.limbs, n);
        steps.applyToCoefficients(previous_.limbs, current_.limbs, std::min<std::size_t>(held, previous_.count));
        negative_ ^= steps.odd;
        return STATUS_OK;
    }

private:
    using Operand = detail::Operand;

    // The upper 64 bits of an array whose top limb shows that many zeros; all of a single limb.
    static std::uint64_t upper(const Limb* limbs, std::size_t n, unsigned shift) noexcept
    {
        if (n == 1) return limbs[0];
        return limbs[n - 1] << shift | limbs[n - 2] >> 1 >> (63 - shift);
    }

    // One step, whatever its quotient.
    Status advanceByDivision() noexcept
    {
        BigNum quotient, product;
        Status status = detail::divide(&quotient, r_, r_, s_);
        if (status == STATUS_OK) status = detail::multiply(product, quotient, current_);
        if (status == STATUS_OK) status = bnAdd(previous_, previous_, product);
        swap(r_, s_);
        swap(previous_, current_);
        negative_ = !negative_;
        return status;
    }

    BigNum r_, s_, previous_, current_;
    bool negative_ = false; // the previous coefficient
};

} // namespace

Status bnGcd(BigNum& result, const BigNum& a, const BigNum& b)
{
    if (detail::tooLong(a, b)) return BN_E_RANGE;
    BigNum x, y;
    Status status = bnCopy(x, a);
    if (status == STATUS_OK) status = bnCopy(y, b);
    while (status == STATUS_OK && bnCompareWord(y, 0) != 0) {
        status = bnModulo(x, x, y);
        swap(x, y);
    }
    return status == STATUS_OK ? bnCopy(result, x) : status;
}

Status bnExtendedGcd(SignedBigNum& x, SignedBigNum* y, const BigNum& a, const BigNum& m)
{
    if (detail::tooLong(a, m) || bnCompareWord(a, 0) == 0 || bnCompareWord(m, 0) == 0) return BN_E_RANGE;
    Remainders remainders;
    Status status = remainders.start(a, m);
    while (status == STATUS_OK && !remainders.atEnd()) status = remainders.advance();
    if (status != STATUS_OK) return status;
    if (bnCompareWord(remainders.divisor(), 1) != 0) return BN_E_NO_INVERSE;
    if (y == nullptr) return remainders.coefficient(x);

    // m y = 1 - a x, in magnitudes: x first goes to a number of its own, since it may be the record of a or m.
    SignedBigNum first;
    BigNum product;
    status = remainders.coefficient(first);
    const bool positive = !first.negative && bnCompareWord(first.value, 0) != 0;
    if (status == STATUS_OK) status = detail::multiply(product, a, first.value);
    if (status == STATUS_OK) status = positive ? bnSubtractWord(product, product, 1) : bnAddWord(product, product, 1);
    BigNum rest;
    if (status == STATUS_OK) status = detail::divide(&product, rest, product, m);
    if (status == STATUS_OK) status = bnCopy(x.value, first.value);
    if (status == STATUS_OK) status = bnCopy(y->value, product);
    x.negative = first.negative;
    y->negative = positive && bnCompareWord(product, 0) != 0;
    return status;
}

Status bnModInverse(BigNum& result, const BigNum& a, const BigNum& m)
{
    SignedBigNum x;
    const Status status = bnExtendedGcd(x, nullptr, a, m);
    if (status != STATUS_OK) return status;
    // |x| is below m, so one correction brings it into 0..m-1.
    return x.negative ? bnSubtract(result, m, x.value) : bnCopy(result, x.value);
}

} // namespace toolbelt
