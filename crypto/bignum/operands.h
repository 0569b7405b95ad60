// What the operations on records share: the significant limbs of an operand, the size limit, and storing a result.
#pragma once

#include "crypto/base/heap.h"
#include "crypto/bignum/bignum.h"
#include "crypto/bignum/limbs.h"

namespace toolbelt::detail {

using limbs::Limb;

// An operand's limbs without leading zeros; none for zero. Stays valid while the number is not resized.
struct Operand
{
    const Limb* data;
    std::size_t count;

    explicit Operand(const BigNum& number) noexcept
        : data(number.limbs), count(number.count > 0 ? limbs::significant(number.limbs, std::size_t(number.count)) : 0)
    {}
};

// Arithmetic takes operands of fewer 32-bit words than this; a significant limb is two words.
inline constexpr std::size_t operandWordLimit = 65536;

template <typename... Numbers>
bool tooLong(const Numbers&... numbers) noexcept
{
    return ((2 * Operand(numbers).count >= operandWordLimit) || ...);
}

// Copies a result into the destination, as bnCopy does. The limbs may lie in the destination's own array.
Status store(BigNum& destination, const Limb* limbs, std::size_t count) noexcept;

// Makes an owned number of that many limbs, all zero (at least one).
Status resizeLimbs(BigNum& number, std::size_t limbs) noexcept;

// bnDivide and bnShiftLeft without the limit on the operands, for intermediate values.
Status divide(BigNum* quotient, BigNum& remainder, const BigNum& a, const BigNum& n) noexcept;
Status shiftLeft(BigNum& destination, const BigNum& source, std::uint32_t bits) noexcept;
// bnMultiply without the limit.
Status multiply(BigNum& product, const BigNum& a, const BigNum& b) noexcept;

} // namespace toolbelt::detail
