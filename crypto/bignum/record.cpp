// Storage of a BigNum: sizing, copying and views. Every array that is given up is wiped first.
#include <cstring>

#include "crypto/bignum/operands.h"

namespace toolbelt {
namespace {

std::size_t arrayLimbs(const BigNum& number) noexcept
{
    return number.count > 0 ? static_cast<std::size_t>(number.count) : 0;
}

// Wipes and frees an owned array; the record is empty, and owns what it gets next.
void releaseArray(BigNum& number) noexcept
{
    if (!number.borrowed) heap::releaseSecret(number.limbs, arrayLimbs(number) * sizeof(std::uint64_t));
    bnInit(number);
}

// An owned number of exactly that many limbs, all zero. The array is kept when it has that size already.
Status reallocate(BigNum& number, std::size_t limbs) noexcept
{
    if (number.limbs == nullptr || arrayLimbs(number) != limbs) {
        releaseArray(number);
        // Fewer limbs than this, so that neither the byte size nor the signed count can overflow.
        if (limbs > SIZE_MAX / 2 / sizeof(std::uint64_t) || limbs > INT32_MAX) return BN_E_MEMORY;
        number.limbs = static_cast<std::uint64_t*>(heap::allocate(limbs * sizeof(std::uint64_t)));
        if (number.limbs == nullptr) return BN_E_MEMORY;
        number.count = static_cast<std::int32_t>(limbs);
    }
    wipe(number.limbs, limbs * sizeof(std::uint64_t));
    return STATUS_OK;
}

} // namespace

BigNum::~BigNum()
{
    if (limbs != nullptr) bnDestroy(*this); // most of a power's table of records stays empty
}

void bnInit(BigNum& number)
{
    number.count = 0;
    number.limbs = nullptr;
    number.borrowed = 0;
}

void bnDestroy(BigNum& number)
{
    releaseArray(number);
}

Status bnResize(BigNum& number, std::uint32_t size, const std::uint8_t* source)
{
    const std::size_t needed = size / 8 + (size % 8 != 0);
    if (number.borrowed) {
        if (arrayLimbs(number) < needed) return BN_E_RANGE;
        wipe(number.limbs, arrayLimbs(number) * sizeof(std::uint64_t));
    } else {
        const Status status = reallocate(number, needed ? needed : 1);
        if (status != STATUS_OK) return status;
    }
    if (source == nullptr) return STATUS_OK;
    for (std::uint32_t i = 0; i < size; ++i) number.limbs[i / 8] |= std::uint64_t{source[size - 1 - i]} << i % 8 * 8;
    return STATUS_OK;
}

Status bnCopy(BigNum& destination, const BigNum& source)
{
    if (&destination == &source) return STATUS_OK;
    const detail::Operand value(source);
    return detail::store(destination, value.data, value.count);
}

Status bnView(BigNum& destination, const BigNum& source, std::int32_t first, std::int32_t maximum)
{
    if (first < 0) return BN_E_RANGE;
    if (&destination == &source && !source.borrowed) return BN_E_RANGE; // it would show limbs that no one owns any more
    std::int32_t count = source.count > first ? source.count - first : 0;
    std::uint64_t* const limbs = count > 0 ? source.limbs + first : nullptr;
    releaseArray(destination);
    if (count == 0) return reallocate(destination, 1);
    if (maximum >= 0 && count > maximum) count = maximum;
    destination.count = count;
    destination.limbs = limbs;
    destination.borrowed = 1;
    return STATUS_OK;
}

namespace detail {

Status store(BigNum& destination, const Limb* limbs, std::size_t count) noexcept
{
    // The record always has a limb, zero too.
    const std::size_t needed = count ? count : 1;
    if (arrayLimbs(destination) < needed) {
        if (destination.borrowed) return BN_E_RANGE;
        const Status status = reallocate(destination, needed);
        if (status != STATUS_OK) return status;
    }
    // Copied before the rest is zeroed: a window may be the destination of its own source.
    if (count) std::memmove(destination.limbs, limbs, count * sizeof(Limb));
    wipe(destination.limbs + count, (arrayLimbs(destination) - count) * sizeof(Limb));
    return STATUS_OK;
}

Status resizeLimbs(BigNum& number, std::size_t limbs) noexcept
{
    return reallocate(number, limbs ? limbs : 1);
}

} // namespace detail
} // namespace toolbelt
