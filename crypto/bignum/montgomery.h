// Montgomery's method: products modulo an odd n without division, on numbers kept as x R mod n, R = 2^(64 k).
#pragma once

#include "crypto/bignum/operands.h"

namespace toolbelt {

// r = a b / R mod n, for a and b below n, all of k limbs; r may be a or b. inverse is -1/n mod 2^64; scratch holds
// montgomeryScratch(k) limbs. The same array given as a and b is squared.
void montgomeryProduct(limbs::Limb* r, const limbs::Limb* a, const limbs::Limb* b, const limbs::Limb* n, std::size_t k,
                       limbs::Limb inverse, limbs::Limb* scratch) noexcept;
std::size_t montgomeryScratch(std::size_t k) noexcept;

// What one exponentiation needs of its modulus. The modulus is the caller's, odd, and stays in place.
struct MontgomeryContext
{
    const BigNum& modulus;
    std::int32_t k = 0; // significant limbs of the modulus
    BigNum inverseR;    // 1/R mod n: leads back out of Montgomery form
    BigNum inverseN;    // -1/n mod 2^64, one limb
    BigNum scratch;     // for the product, so that none is allocated a product

    explicit MontgomeryContext(const BigNum& n) noexcept : modulus(n) {}

    [[nodiscard]] Status build() noexcept;
    // r = a b / R mod n on arrays of k limbs.
    void product(limbs::Limb* r, const limbs::Limb* a, const limbs::Limb* b) noexcept;
};

} // namespace toolbelt
