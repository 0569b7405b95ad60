// The product of two powers modulo an odd number, squared in side by side: Montgomery's method with windows of four
// bits of both exponents, which the bits of a signature's exponents are too few to fill longer ones with.
#include <algorithm>
#include <cstring>

#include "crypto/bignum/digits.h"
#include "crypto/bignum/modular.h"
#include "crypto/bignum/montgomery.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t windowBits = 4, powers = (1 << windowBits) - 1;

std::uint32_t windowAt(const BigNum& exponent, std::uint32_t bit) noexcept
{
    return exponent.count > 0 && bit / 64 < static_cast<std::uint32_t>(exponent.count)
               ? static_cast<std::uint32_t>(exponent.limbs[bit / 64] >> bit % 64) & powers
               : 0;
}

Status montgomeryPowers(BigNum& result, const BigNum& a, const BigNum& x, const BigNum& b, const BigNum& y,
                        const BigNum& modulus) noexcept
{
    MontgomeryContext context(modulus);
    Status status = context.build();
    if (status != STATUS_OK) return status;
    // The product, then the powers 1 to 15 of a, then those of b.
    BigNum room;
    status = detail::resizeLimbs(room, alignedRoom + (1 + 2 * powers) * context.size);
    if (status != STATUS_OK) return status;
    limbs::Limb* const value = alignedDigits(room.limbs);
    const auto power = [&](std::uint32_t index) { return value + index * context.size; };
    const BigNum* const bases[] = {&a, &b};
    for (std::uint32_t base = 0; base < 2; ++base) {
        const std::uint32_t first = 1 + base * powers;
        status = context.enter(power(first), *bases[base]);
        if (status != STATUS_OK) return status;
        for (std::uint32_t i = 1; i < powers; ++i)
            context.product(power(first + i), power(first + i - 1), power(first));
    }

    bool begun = false; // until then the value stands for 1
    const auto take = [&](const limbs::Limb* factor) {
        if (begun)
            context.product(value, value, factor);
        else
            std::memcpy(value, factor, context.size * sizeof(limbs::Limb));
        begun = true;
    };
    for (std::uint32_t bit = (std::max(bnBitLength(x), bnBitLength(y)) + windowBits - 1) / windowBits; bit-- > 0;) {
        for (std::uint32_t i = 0; i < windowBits && begun; ++i) context.product(value, value, value);
        if (const std::uint32_t window = windowAt(x, windowBits * bit)) take(power(window));
        if (const std::uint32_t window = windowAt(y, windowBits * bit)) take(power(powers + window));
    }
    return context.leave(result, value);
}

} // namespace

Status bnModExpPair(BigNum& result, const BigNum& a, const BigNum& x, const BigNum& b, const BigNum& y,
                    const BigNum& modulus)
{
    // Short and even moduli, and exponents of 0, have no windows to share.
    const bool shared = bnTestBit(modulus, 0) != 0 && bnBitLength(modulus) >= montgomeryBits && bnBitLength(x) != 0 &&
                        bnBitLength(y) != 0 && !detail::tooLong(a, x, b, y, modulus);
    if (shared) return montgomeryPowers(result, a, x, b, y, modulus);
    BigNum first, second;
    Status status = bnModExp(first, a, x, modulus);
    if (status == STATUS_OK) status = bnModExp(second, b, y, modulus);
    return status == STATUS_OK ? bnModMultiply(result, first, second, modulus) : status;
}

} // namespace toolbelt
