// The vector tiers of the small-prime table's Fermat rounds: several candidates side by side.
#pragma once

#include <cstdint>

namespace toolbelt {

inline constexpr std::uint32_t fermatBatch = 8;
// Candidates below this: in Montgomery form their remainders, up to twice the candidate, keep to a word.
inline constexpr std::uint32_t fermatBatchLimit = (1u << 30) - 2 * fermatBatch;

// Bit i is set when witnesses[i]^(n - 1) = 1 modulo n = first + 2 i, for an odd first above 1 and witnesses below n.
std::uint32_t fermatRoundsSse2(std::uint32_t first, const std::uint32_t* witnesses) noexcept;
std::uint32_t fermatRoundsAvx2(std::uint32_t first, const std::uint32_t* witnesses) noexcept;

} // namespace toolbelt
