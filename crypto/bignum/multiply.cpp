// The full product of two numbers, and the square of one.
#include "crypto/bignum/operands.h"

namespace toolbelt {

Status bnMultiply(BigNum& product, const BigNum& a, const BigNum& b)
{
    if (detail::tooLong(a, b)) return BN_E_RANGE;
    return detail::multiply(product, a, b);
}

namespace detail {

Status multiply(BigNum& product, const BigNum& a, const BigNum& b) noexcept
{
    const Operand x(a), y(b);
    if (x.count == 0 || y.count == 0) return store(product, nullptr, 0);
    const std::size_t size = x.count + y.count;
    SecretArray<Limb> room(size + limbs::multiplyScratch(x.count, y.count));
    if (!room) return BN_E_MEMORY;
    if (&a == &b)
        limbs::square(room.data(), x.data, x.count, room.data() + size);
    else
        limbs::multiply(room.data(), x.data, x.count, y.data, y.count, room.data() + size);
    return store(product, room.data(), limbs::significant(room.data(), size));
}

} // namespace detail
} // namespace toolbelt
