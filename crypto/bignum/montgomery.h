// Montgomery's method: products modulo an odd n without division, on numbers kept as x R mod n, R = 2^(64 k); the
// vector kernels keep them in a scale of their own (montgomery_kernel.h), which takes the place of R below.
#pragma once

#include "crypto/bignum/montgomery_kernel.h"
#include "crypto/bignum/operands.h"

namespace toolbelt {

constexpr std::uint32_t montgomeryBits = 32; // fixed: powers modulo shorter numbers take the plain method

// What one exponentiation needs of its modulus. The modulus is the caller's, odd, above 1, and stays in place.
//
// A value in Montgomery form is an array of size limbs: k limbs for the portable product, the digits of
// montgomery_kernel.h for the others.
struct MontgomeryContext
{
    const BigNum& modulus;
    std::int32_t k = 0; // significant limbs of the modulus
    BigNum inverseR;    // portable: 1/R mod n, leads back out of Montgomery form
    BigNum inverseN;    // -1/n mod 2^64, one limb
    BigNum scratch;     // for the product, so that none is allocated a product

    const MontgomeryKernel* kernel = nullptr; // null: portable
    DigitModulus digits;
    Digit* operand = nullptr; // room for one more value
    std::size_t size = 0;

    explicit MontgomeryContext(const BigNum& n) noexcept : modulus(n) {}

    [[nodiscard]] Status build() noexcept;
    // value, of size limbs, = x R mod n.
    [[nodiscard]] Status enter(limbs::Limb* value, const BigNum& x) noexcept;
    // r = a b / R mod n, on values.
    void product(limbs::Limb* r, const limbs::Limb* a, const limbs::Limb* b) noexcept;
    // x = value / R mod n; the value is used up.
    [[nodiscard]] Status leave(BigNum& x, limbs::Limb* value) noexcept;

private:
    [[nodiscard]] Status buildPortable() noexcept;
    [[nodiscard]] Status buildDigits() noexcept;
    [[nodiscard]] Status enterDigits(Digit* value, const BigNum& x) noexcept;
};

} // namespace toolbelt
