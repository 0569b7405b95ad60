// Quotients, powers, divisors and inverses against GMP.
#include "crypto/bignum/modular.h"
#include "fuzz/natural.h"

namespace toolbelt::fuzz {
namespace {

void checkDivision(Input& input)
{
    const std::uint32_t options = input.byte();
    const Bytes a = input.number(512), b = input.number(options & 1 ? 512 : 64);
    BigNum left, right, quotient, remainder;
    load(left, a);
    load(right, b);
    const Status status = bnDivide(options & 2 ? nullptr : &quotient, remainder, left, right);
    if (trimmed(b).empty()) return require(status == BN_E_RANGE, "no division by zero");
    Bytes rest;
    const Bytes expected = divide(a, b, rest);
    require(status == STATUS_OK && valueOf(remainder) == rest, "a remainder");
    require(options & 2 || valueOf(quotient) == expected, "a quotient");
    require(bnMultiply(quotient, left, right) == STATUS_OK && valueOf(quotient) == multiply(a, b), "a product");
    require(bnModulo(left, left, right) == STATUS_OK && bnCompare(left, remainder) == 0, "a remainder in place");
}

// By both methods.
void checkPower(Input& input)
{
    const bool big = input.byte() % 16 == 0; // moduli that are split by Karatsuba's method are tried now and then
    const Bytes modulus = input.number(big ? 144 : 24), base = input.number(big ? 150 : 32);
    const Bytes exponent = input.number(big ? 2 : 10);
    BigNum n, b, e, result;
    load(n, modulus);
    load(b, base);
    load(e, exponent);
    const bool isZero = trimmed(modulus).empty();
    for (const bool plain : {false, true}) {
        require(bnModExp(result, b, e, n, plain) == (isZero ? BN_E_RANGE : STATUS_OK), "a power's status");
        if (isZero) continue;
        // By design the power 0 is 1 whatever the modulus.
        const Bytes expected = trimmed(exponent).empty() ? Bytes{1} : power(base, exponent, modulus);
        require(valueOf(result) == expected, "a power");
    }
    if (isZero) return;
    require(bnModExp(n, b, e, n) == STATUS_OK && bnCompare(n, result) == 0, "a power in place of its modulus");
}

void checkDivisor(Input& input)
{
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
    const Status expected = trimmed(a).empty() || trimmed(m).empty() ? BN_E_RANGE
                            : divisor == Bytes{1}                    ? STATUS_OK
                                                                     : BN_E_NO_INVERSE;
    require(bnModInverse(result, left, right) == expected, "an inverse or none");
    if (expected != STATUS_OK) return;
    const Bytes inverse = valueOf(result);
    require(isLess(inverse, m) && modulo(multiply(inverse, a), m) == modulo({1}, m), "an inverse");
}

const Target target("arithmetic", [](Input input) {
    constexpr void (*checks[])(Input&) = {checkDivision, checkPower, checkDivisor};
    checks[input.byte() % 3](input);
});

} // namespace
} // namespace toolbelt::fuzz
