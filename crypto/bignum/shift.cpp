// Shifts by any number of bits.
#include <cstring>

#include "crypto/bignum/operands.h"

namespace toolbelt {

Status bnShiftLeft(BigNum& destination, const BigNum& source, std::uint32_t bits)
{
    if (detail::tooLong(source)) return BN_E_RANGE;
    return detail::shiftLeft(destination, source, bits);
}

Status bnShiftRight(BigNum& destination, const BigNum& source, std::uint32_t bits)
{
    if (detail::tooLong(source)) return BN_E_RANGE;
    const detail::Operand x(source);
    const std::size_t dropped = bits / 64;
    if (x.count <= dropped) return detail::store(destination, nullptr, 0);
    const std::size_t left = x.count - dropped;
    SecretArray<detail::Limb> result(left);
    if (!result) return BN_E_MEMORY;
    limbs::shiftRight(result.data(), x.data + dropped, left, bits % 64);
    return detail::store(destination, result.data(), limbs::significant(result.data(), left));
}

namespace detail {

Status shiftLeft(BigNum& destination, const BigNum& source, std::uint32_t bits) noexcept
{
    const Operand x(source);
    if (x.count == 0) return store(destination, nullptr, 0);
    const std::size_t low = bits / 64;
    const std::size_t size = low + x.count + 1;
    SecretArray<Limb> result(size);
    if (!result) return BN_E_MEMORY;
    std::memset(result.data(), 0, low * sizeof(Limb));
    result[size - 1] = limbs::shiftLeft(result.data() + low, x.data, x.count, bits % 64);
    return store(destination, result.data(), limbs::significant(result.data(), size));
}

} // namespace detail
} // namespace toolbelt
