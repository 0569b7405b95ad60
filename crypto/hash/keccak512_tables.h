// Tables of Keccak-f[1600], worked out while compiling: what its routines have in common. A lane (x, y) is number
// x + 5y.
#pragma once

#include <array>
#include <cstdint>

namespace toolbelt {

inline constexpr std::uint32_t KECCAK_RATE = 72; // bytes absorbed before a permutation
inline constexpr std::uint32_t KECCAK_ROUNDS = 24;

// Where pi moves lane (x, y): to (y, 2x + 3y).
inline constexpr std::array<std::uint32_t, 25> KECCAK_MOVES = [] {
    std::array<std::uint32_t, 25> moves = {};
    for (std::uint32_t lane = 0; lane < 25; ++lane) {
        const std::uint32_t x = lane % 5, y = lane / 5;
        moves[lane] = y + 5 * ((2 * x + 3 * y) % 5);
    }
    return moves;
}();

// Rotations of rho: the triangular numbers, along the path that pi takes from lane (1, 0) on.
inline constexpr std::array<int, 25> KECCAK_ROTATIONS = [] {
    std::array<int, 25> rotations = {};
    std::uint32_t lane = 1;
    for (int t = 0; t < 24; ++t) {
        rotations[lane] = (t + 1) * (t + 2) / 2 % 64;
        lane = KECCAK_MOVES[lane];
    }
    return rotations;
}();

// Constants of iota: the output of the register x^8 + x^6 + x^5 + x^4 + 1, seven bits a round, at bits 2^j - 1.
inline constexpr std::array<std::uint64_t, KECCAK_ROUNDS> KECCAK_CONSTANTS = [] {
    std::array<std::uint64_t, KECCAK_ROUNDS> constants = {};
    std::uint32_t shifted = 1;
    for (std::uint64_t& constant : constants)
        for (std::uint32_t j = 0; j < 7; ++j) {
            if (shifted & 1) constant |= 1ull << ((1u << j) - 1);
            shifted = shifted << 1 ^ (shifted & 0x80 ? 0x171 : 0);
        }
    return constants;
}();

} // namespace toolbelt
