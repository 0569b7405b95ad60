// Size, single bits and order of numbers.
#include <bit>
#include <cstring>
#include <utility>

#include "crypto/bignum/operands.h"

namespace toolbelt {
namespace {

bool hasLimb(const BigNum& number, std::uint32_t index) noexcept
{
    return number.count > 0 && index < static_cast<std::uint32_t>(number.count);
}

} // namespace

std::int32_t bnTopLimb(const BigNum& number)
{
    const detail::Operand value(number);
    return value.count ? static_cast<std::int32_t>(value.count - 1) : 0;
}

std::uint32_t bnBitLength(const BigNum& number)
{
    const detail::Operand value(number);
    if (value.count == 0) return 0;
    // Half a gigabyte of limbs and more has more bits than 32 bits can count.
    if (value.count > UINT32_MAX / 64) return UINT32_MAX;
    return static_cast<std::uint32_t>(64 * (value.count - 1)) +
           static_cast<std::uint32_t>(std::bit_width(value.data[value.count - 1]));
}

int bnTestBit(const BigNum& number, std::uint32_t bit)
{
    return hasLimb(number, bit / 64) ? static_cast<int>(number.limbs[bit / 64] >> bit % 64 & 1) : 0;
}

Status bnSetBit(BigNum& number, std::uint32_t bit)
{
    if (!hasLimb(number, bit / 64)) {
        if (number.borrowed) return BN_E_RANGE;
        BigNum grown;
        const Status status = detail::resizeLimbs(grown, bit / 64 + 1);
        if (status != STATUS_OK) return status;
        if (number.count > 0) std::memcpy(grown.limbs, number.limbs, std::size_t(number.count) * sizeof *grown.limbs);
        std::swap(grown.limbs, number.limbs);
        std::swap(grown.count, number.count);
    }
    number.limbs[bit / 64] |= std::uint64_t{1} << bit % 64;
    return STATUS_OK;
}

void bnClearBit(BigNum& number, std::uint32_t bit)
{
    if (hasLimb(number, bit / 64)) number.limbs[bit / 64] &= ~(std::uint64_t{1} << bit % 64);
}

std::int32_t bnCompare(const BigNum& a, const BigNum& b)
{
    const std::int32_t byIndex = bnTopLimb(a) - bnTopLimb(b);
    if (byIndex != 0) return byIndex;
    const detail::Operand x(a), y(b);
    return limbs::compare(x.data, x.count, y.data, y.count);
}

int bnCompareWord(const BigNum& a, std::uint64_t value)
{
    const detail::Operand x(a);
    return limbs::compare(x.data, x.count, &value, 1);
}

} // namespace toolbelt
