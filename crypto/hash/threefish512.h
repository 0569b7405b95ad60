// What the routines of Skein-512 have in common: constants of its block cipher, Threefish-512.
#pragma once

#include <cstdint>

namespace toolbelt {

inline constexpr std::uint64_t THREEFISH_PARITY = 0x1BD11BDAA9FC1A22;
inline constexpr std::uint32_t THREEFISH_SUBKEYS = 19; // one before every four of the 72 rounds, and one at the end
// Rotations of the four pairs of words, for eight rounds that repeat.
inline constexpr int THREEFISH_ROTATIONS[8][4] = {{46, 36, 19, 37}, {33, 27, 14, 42}, {17, 49, 36, 39},
                                                  {44, 9, 54, 56},  {39, 30, 34, 24}, {13, 50, 10, 17},
                                                  {25, 29, 39, 43}, {8, 35, 56, 22}};
inline constexpr std::uint64_t SKEIN_FLAG_FIRST = 1ull << 62;

} // namespace toolbelt
