// Greatest common divisors, coefficients and inverses against the comparison arithmetic.
#include "crypto/bignum/modular.h"
#include "fuzz/natural.h"

namespace toolbelt::fuzz {
namespace {

const Target target("gcd", [](Input input) {
    Bytes a = input.number(80), m = input.number(80);
    if (const Bytes common = input.number(20); !trimmed(common).empty()) { // a common factor, perhaps
        a = multiply(a, common);
        m = multiply(m, common);
    }
    BigNum left, right, result;
    load(left, a);
    load(right, m);
    const Bytes divisor = gcd(a, m);
    require(bnGcd(result, left, right) == STATUS_OK && valueOf(result) == divisor, "a divisor");
    SignedBigNum x, y;
    const Status expected = trimmed(a).empty() || trimmed(m).empty() ? BN_E_RANGE
                            : divisor == Bytes{1}                    ? STATUS_OK
                                                                     : BN_E_NO_INVERSE;
    require(bnExtendedGcd(x, &y, left, right) == expected && bnModInverse(result, left, right) == expected,
            "an inverse or none");
    if (expected != STATUS_OK) return;
    const Bytes inverse = valueOf(result);
    require(isLess(inverse, m) && modulo(multiply(inverse, a), m) == modulo({1}, m), "an inverse");
    // The coefficients' signs say on which side each product stands.
    const Bytes p = multiply(a, valueOf(x.value)), q = multiply(m, valueOf(y.value));
    const Bytes above = add(x.negative ? Bytes() : p, y.negative ? Bytes() : q);
    const Bytes below = add(x.negative ? p : Bytes(), y.negative ? q : Bytes());
    require(above == add(below, {1}), "a x + m y = 1");
});

} // namespace
} // namespace toolbelt::fuzz
