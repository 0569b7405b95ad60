// Sums and differences.
#include <utility>

#include "crypto/bignum/operands.h"

namespace toolbelt {
namespace {

using detail::Limb;

Status addLimbs(BigNum& sum, const Limb* a, std::size_t na, const Limb* b, std::size_t nb) noexcept
{
    if (na < nb) {
        std::swap(a, b);
        std::swap(na, nb);
    }
    SecretArray<Limb> result(na + 1);
    if (!result) return BN_E_MEMORY;
    result[na] = limbs::add(result.data(), a, na, b, nb);
    return detail::store(sum, result.data(), limbs::significant(result.data(), na + 1));
}

Status subtractLimbs(BigNum& difference, const Limb* a, std::size_t na, const Limb* b, std::size_t nb) noexcept
{
    if (limbs::compare(a, na, b, nb) < 0) return BN_E_RANGE;
    SecretArray<Limb> result(na);
    if (!result) return BN_E_MEMORY;
    limbs::subtract(result.data(), a, na, b, limbs::significant(b, nb));
    return detail::store(difference, result.data(), limbs::significant(result.data(), na));
}

} // namespace

Status bnAdd(BigNum& sum, const BigNum& a, const BigNum& b)
{
    if (detail::tooLong(a, b)) return BN_E_RANGE;
    const detail::Operand x(a), y(b);
    return addLimbs(sum, x.data, x.count, y.data, y.count);
}

Status bnAddWord(BigNum& sum, const BigNum& a, std::uint64_t value)
{
    if (detail::tooLong(a)) return BN_E_RANGE;
    const detail::Operand x(a);
    return addLimbs(sum, x.data, x.count, &value, 1);
}

Status bnSubtract(BigNum& difference, const BigNum& a, const BigNum& b)
{
    if (detail::tooLong(a, b)) return BN_E_RANGE;
    const detail::Operand x(a), y(b);
    return subtractLimbs(difference, x.data, x.count, y.data, y.count);
}

Status bnSubtractWord(BigNum& difference, const BigNum& a, std::uint64_t value)
{
    if (detail::tooLong(a)) return BN_E_RANGE;
    const detail::Operand x(a);
    return subtractLimbs(difference, x.data, x.count, &value, 1);
}

} // namespace toolbelt
