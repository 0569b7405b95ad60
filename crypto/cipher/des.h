// The DES rounds that DES and Triple DES share. Between chained keys the final permutation of one and the initial
// permutation of the next cancel, so both are apart from the rounds here.
#pragma once

#include <cstdint>

#include "crypto/cipher/side_by_side.h"

namespace toolbelt {

// The key of each round in two words: six bits for S1, S3, S5 and S7 at bits 26, 18, 10 and 2, then S2, S4, S6 and S8.
struct DesSchedule
{
    std::uint32_t roundKeys[16][2];
};

// Of N blocks side by side.
template <std::uint32_t N>
struct DesHalves
{
    Words<N> L, R;
};

// Reads eight bytes; the parity bits are ignored, weak keys are keys like others.
void desExpandKey(DesSchedule& schedule, const std::uint8_t* key) noexcept;

// Defined for one block and for SIDE blocks.
template <std::uint32_t N>
DesHalves<N> desInitialPermutation(const std::uint8_t* in) noexcept;
template <std::uint32_t N>
void desFinalPermutation(std::uint8_t* out, DesHalves<N> halves) noexcept;
// The 16 rounds and the exchange of the halves after them.
template <std::uint32_t N>
DesHalves<N> desEncryptRounds(const DesSchedule& schedule, DesHalves<N> halves) noexcept;
template <std::uint32_t N>
DesHalves<N> desDecryptRounds(const DesSchedule& schedule, DesHalves<N> halves) noexcept;

} // namespace toolbelt
