// Modular powers and products against the comparison arithmetic, by both methods.
#include "crypto/bignum/modular.h"
#include "fuzz/natural.h"

namespace toolbelt::fuzz {
namespace {

const Target target("power", [](Input input) {
    const bool big = input.byte() % 16 == 0; // moduli that are split by Karatsuba's method are tried now and then
    const Bytes modulus = input.number(big ? 144 : 24), base = input.number(big ? 150 : 32);
    const Bytes exponent = input.number(big ? 2 : 10), other = input.number(24);
    BigNum n, b, e, o, result;
    load(n, modulus);
    load(b, base);
    load(e, exponent);
    load(o, other);
    const bool isZero = trimmed(modulus).empty();
    const Status status = bnModMultiply(result, b, o, n);
    require(status == (isZero ? BN_E_RANGE : STATUS_OK), "a modulus of zero");
    if (!isZero) require(valueOf(result) == modulo(multiply(base, other), modulus), "a product");
    for (const bool plain : {false, true}) {
        require(bnModExp(result, b, e, n, plain) == (isZero ? BN_E_RANGE : STATUS_OK), "a power's status");
        if (isZero) continue;
        // By design the power 0 is 1 whatever the modulus.
        const Bytes expected = trimmed(exponent).empty() ? Bytes{1} : power(base, exponent, modulus);
        require(valueOf(result) == expected, "a power");
    }
    if (isZero) return;
    require(bnModExp(n, b, e, n) == STATUS_OK && bnCompare(n, result) == 0, "a power in place of its modulus");
});

} // namespace
} // namespace toolbelt::fuzz
