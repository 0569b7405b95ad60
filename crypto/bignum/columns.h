// The vector tiers of the schoolbook product, for operands of at most columnsLimit limbs.
#pragma once

#include "crypto/bignum/limbs.h"

namespace toolbelt::limbs {

inline constexpr std::size_t columnsLimit = 16;

// r[0..na + nb) = a * b, 1 <= na, nb <= columnsLimit. r overlaps neither operand. Fastest with the
// shorter operand first.
void multiplyColumnsSse2(Limb* r, const Limb* a, std::size_t na, const Limb* b, std::size_t nb) noexcept;
void multiplyColumnsAvx2(Limb* r, const Limb* a, std::size_t na, const Limb* b, std::size_t nb) noexcept;
void multiplyColumnsAvx512(Limb* r, const Limb* a, std::size_t na, const Limb* b, std::size_t nb) noexcept;

} // namespace toolbelt::limbs
