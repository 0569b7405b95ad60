// Greatest common divisors by Euclid's algorithm, plain and extended, and the modular inverse.
#include <utility>

#include "crypto/bignum/modular.h"
#include "crypto/bignum/operands.h"

namespace toolbelt {
namespace {

void swap(BigNum& a, BigNum& b) noexcept
{
    std::swap(a.count, b.count);
    std::swap(a.limbs, b.limbs);
    std::swap(a.borrowed, b.borrowed);
}

Status copySigned(SignedBigNum& destination, const SignedBigNum& source) noexcept
{
    destination.negative = source.negative && bnCompareWord(source.value, 0) != 0;
    return bnCopy(destination.value, source.value);
}

// The coefficients of one operand in two successive remainders, which have opposite signs. A zero carries the sign that
// its place in the sequence gives it.
struct Coefficients
{
    SignedBigNum previous, current;

    Status start(std::uint64_t first, std::uint64_t second, bool secondNegative) noexcept
    {
        previous.negative = !secondNegative;
        current.negative = secondNegative;
        const Status status = detail::store(previous.value, &first, 1);
        return status == STATUS_OK ? detail::store(current.value, &second, 1) : status;
    }

    // previous - quotient * current, where opposite signs make it a sum of magnitudes, is the next.
    Status advance(const BigNum& quotient) noexcept
    {
        BigNum product;
        Status status = bnMultiply(product, quotient, current.value);
        if (status == STATUS_OK) status = bnAdd(previous.value, previous.value, product);
        if (status != STATUS_OK) return status;
        swap(previous.value, current.value);
        std::swap(previous.negative, current.negative);
        return STATUS_OK;
    }
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
    BigNum r, s, quotient; // two successive remainders: r = a xs.previous + m ys.previous, s the same with current
    Coefficients xs, ys;
    Status status = bnCopy(r, a);
    if (status == STATUS_OK) status = bnCopy(s, m);
    if (status == STATUS_OK) status = xs.start(1, 0, true);
    if (status == STATUS_OK && y) status = ys.start(0, 1, false);
    while (status == STATUS_OK && bnCompareWord(s, 0) != 0) {
        status = bnDivide(&quotient, r, r, s);
        swap(r, s);
        if (status == STATUS_OK) status = xs.advance(quotient);
        if (status == STATUS_OK && y) status = ys.advance(quotient);
    }
    if (status != STATUS_OK) return status;
    if (bnCompareWord(r, 1) != 0) return BN_E_NO_INVERSE;
    status = copySigned(x, xs.previous);
    return status == STATUS_OK && y ? copySigned(*y, ys.previous) : status;
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
