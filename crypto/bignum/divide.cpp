// Quotient and remainder. Both operands are shifted until the divisor's top bit is set, as the long division wants it;
// the remainder is shifted back.
#include <bit>

#include "crypto/bignum/operands.h"

namespace toolbelt {

Status bnDivide(BigNum* quotient, BigNum& remainder, const BigNum& a, const BigNum& n)
{
    if (detail::tooLong(a, n)) return BN_E_RANGE;
    return detail::divide(quotient, remainder, a, n);
}

Status bnModulo(BigNum& remainder, const BigNum& a, const BigNum& n)
{
    return bnDivide(nullptr, remainder, a, n);
}

namespace detail {

Status divide(BigNum* quotient, BigNum& remainder, const BigNum& a, const BigNum& n) noexcept
{
    const Operand x(a), y(n);
    if (y.count == 0) return BN_E_RANGE;
    if (limbs::compare(x.data, x.count, y.data, y.count) < 0) {
        // The remainder first: the quotient may be the record of a.
        const Status status = bnCopy(remainder, a);
        if (status != STATUS_OK || quotient == nullptr || quotient == &remainder) return status;
        return store(*quotient, nullptr, 0);
    }
    const std::size_t digits = x.count - y.count + 1;
    SecretArray<Limb> room(x.count + 1 + y.count + digits);
    if (!room) return BN_E_MEMORY;
    Limb* const u = room.data();
    Limb* const v = u + x.count + 1;
    Limb* const q = v + y.count;
    const unsigned shift = static_cast<unsigned>(std::countl_zero(y.data[y.count - 1]));
    u[x.count] = limbs::shiftLeft(u, x.data, x.count, shift);
    limbs::shiftLeft(v, y.data, y.count, shift);
    limbs::divide(q, u, x.count, v, y.count);
    limbs::shiftRight(u, u, y.count, shift);
    if (quotient) {
        const Status status = store(*quotient, q, limbs::significant(q, digits));
        if (status != STATUS_OK) return status;
    }
    return store(remainder, u, limbs::significant(u, y.count));
}

} // namespace detail
} // namespace toolbelt
