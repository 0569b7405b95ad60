// Modular products and powers.
//
// Powers modulo an odd number of 32 bits and more are taken in Montgomery form with a fixed window of six bits: behind
// the exponent's top bit, every six bits are squared in and followed by one product with an entry of the power table.
#include <algorithm>
#include <cstring>

#include "crypto/bignum/digits.h"
#include "crypto/bignum/modular.h"
#include "crypto/bignum/montgomery.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t windowBits = 6; // fixed

// The next window below bit: moves bit down behind it, and returns its value. The last window may be shorter.
std::uint32_t takeWindow(const BigNum& exponent, std::uint32_t& bit, std::uint32_t& length) noexcept
{
    std::uint32_t window = 0;
    for (length = 0; length < windowBits && bit > 0; ++length)
        window = 2 * window + static_cast<std::uint32_t>(bnTestBit(exponent, --bit));
    return window;
}

// The powers 1 to 63 of a number in Montgomery form, as windows into one array, whose first value is free for the
// caller. Entries above the largest window that the exponent holds are never looked at, and are not computed.
class PowerTable
{
public:
    Status build(MontgomeryContext& context, const BigNum& base, const BigNum& exponent) noexcept
    {
        std::uint32_t largest = 1;
        for (std::uint32_t bit = bnBitLength(exponent) - 1, length; bit > 0;)
            largest = std::max(largest, takeWindow(exponent, bit, length));
        Status status = detail::resizeLimbs(storage_, alignedRoom + (largest + 1) * context.size);
        if (status != STATUS_OK) return status;
        const auto first = static_cast<std::int32_t>(alignedDigits(storage_.limbs) - storage_.limbs);
        const auto size = static_cast<std::int32_t>(context.size);
        for (std::uint32_t i = 0; i <= largest && status == STATUS_OK; ++i)
            status = bnView(entries_[i], storage_, first + static_cast<std::int32_t>(i) * size, size);
        if (status == STATUS_OK) status = context.enter(entries_[1].limbs, base);
        for (std::uint32_t i = 2; i <= largest && status == STATUS_OK; ++i)
            context.product(entries_[i].limbs, entries_[i - 1].limbs, entries_[1].limbs);
        return status;
    }
    limbs::Limb* operator[](std::uint32_t power) const noexcept { return entries_[power].limbs; }

private:
    BigNum storage_; // before the entries that look into it
    BigNum entries_[1 << windowBits];
};

Status setOne(BigNum& number) noexcept
{
    const limbs::Limb one = 1;
    return detail::store(number, &one, 1);
}

Status plainPower(BigNum& result, const BigNum& base, const BigNum& exponent, const BigNum& modulus) noexcept
{
    BigNum reduced, power;
    Status status = detail::divide(nullptr, reduced, base, modulus);
    if (status == STATUS_OK) status = bnCopy(power, reduced);
    for (std::uint32_t bit = bnBitLength(exponent) - 1; bit > 0 && status == STATUS_OK;) {
        status = bnModMultiply(power, power, power, modulus);
        if (bnTestBit(exponent, --bit) && status == STATUS_OK) status = bnModMultiply(power, power, reduced, modulus);
    }
    return status == STATUS_OK ? bnCopy(result, power) : status;
}

Status montgomeryPower(BigNum& result, const BigNum& base, const BigNum& exponent, const BigNum& modulus) noexcept
{
    MontgomeryContext context(modulus);
    Status status = context.build();
    if (status != STATUS_OK) return status;
    PowerTable table;
    status = table.build(context, base, exponent);
    if (status != STATUS_OK) return status;

    limbs::Limb* const value = table[0];
    std::memcpy(value, table[1], context.size * sizeof(limbs::Limb));
    for (std::uint32_t bit = bnBitLength(exponent) - 1, length; bit > 0;) {
        const std::uint32_t window = takeWindow(exponent, bit, length);
        while (length-- > 0) context.product(value, value, value);
        if (window != 0) context.product(value, value, table[window]);
    }
    return context.leave(result, value);
}

} // namespace

Status bnModMultiply(BigNum& result, const BigNum& a, const BigNum& b, const BigNum& n)
{
    if (detail::tooLong(a, b, n) || detail::Operand(n).count == 0) return BN_E_RANGE;
    BigNum product;
    const Status status = detail::multiply(product, a, b);
    return status == STATUS_OK ? detail::divide(nullptr, result, product, n) : status;
}

Status bnModExp(BigNum& result, const BigNum& base, const BigNum& exponent, const BigNum& modulus, bool forcePlain)
{
    if (detail::tooLong(base, exponent, modulus) || detail::Operand(modulus).count == 0) return BN_E_RANGE;
    if (bnBitLength(exponent) == 0) return setOne(result);
    if (forcePlain || bnBitLength(modulus) < montgomeryBits || bnTestBit(modulus, 0) == 0)
        return plainPower(result, base, exponent, modulus);
    return montgomeryPower(result, base, exponent, modulus);
}

} // namespace toolbelt
