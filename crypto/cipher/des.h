// The DES rounds that DES and Triple DES share. Between chained keys the final permutation of one and the initial
// permutation of the next cancel, so both are apart from the rounds here.
#pragma once

#include <cstdint>

namespace toolbelt {

// The key of each round in two words: six bits for S1, S3, S5 and S7 at bits 26, 18, 10 and 2, then S2, S4, S6 and S8.
struct DesSchedule
{
    std::uint32_t roundKeys[16][2];
};

struct DesHalves
{
    std::uint32_t L, R;
};

// Reads eight bytes; the parity bits are ignored, weak keys are keys like others.
void desExpandKey(DesSchedule& schedule, const std::uint8_t* key) noexcept;

DesHalves desInitialPermutation(const std::uint8_t* in) noexcept;
void desFinalPermutation(std::uint8_t* out, DesHalves halves) noexcept;
// The 16 rounds and the exchange of the halves after them.
DesHalves desEncryptRounds(const DesSchedule& schedule, DesHalves halves) noexcept;
DesHalves desDecryptRounds(const DesSchedule& schedule, DesHalves halves) noexcept;

} // namespace toolbelt
