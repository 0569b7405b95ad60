// What the routines of Whirlpool have in common: its definition, and the tables of 16 KiB that are built from it.
#pragma once

#include <array>
#include <cstdint>

namespace toolbelt {

inline constexpr std::uint32_t WHIRLPOOL_ROUNDS = 10;

// The 4-bit boxes that the substitution is made of: two layers of E for the high half of a byte and of its inverse for
// the low one, and R between them.
inline constexpr std::uint8_t WHIRLPOOL_E[16] = {1, 11, 9, 12, 13, 6, 15, 3, 14, 8, 7, 4, 10, 2, 5, 0};
inline constexpr std::uint8_t WHIRLPOOL_INVERSE_E[16] = {15, 0, 13, 7, 11, 14, 5, 10, 9, 2, 12, 1, 3, 4, 8, 6};
inline constexpr std::uint8_t WHIRLPOOL_R[16] = {7, 12, 11, 13, 14, 4, 9, 15, 6, 3, 8, 10, 2, 5, 1, 0};
consteval std::uint8_t whirlpoolBox(std::uint32_t x)
{
    const std::uint32_t high = WHIRLPOOL_E[x / 16], low = WHIRLPOOL_INVERSE_E[x % 16];
    const std::uint32_t middle = WHIRLPOOL_R[high ^ low];
    return static_cast<std::uint8_t>(WHIRLPOOL_E[high ^ middle] << 4 | WHIRLPOOL_INVERSE_E[low ^ middle]);
}
// First row of the circulant diffusion matrix.
inline constexpr std::uint8_t WHIRLPOOL_CIRCULANT[8] = {1, 1, 4, 1, 8, 5, 2, 9};

// Product in GF(2^8) modulo x^8 + x^4 + x^3 + x^2 + 1.
consteval std::uint8_t whirlpoolMultiply(std::uint32_t a, std::uint32_t b)
{
    std::uint32_t product = 0;
    for (; b != 0; b >>= 1) {
        if (b & 1) product ^= a;
        a = a << 1 ^ (a & 0x80 ? 0x11D : 0);
    }
    return static_cast<std::uint8_t>(product);
}

struct WhirlpoolTables
{
    // rows[column][x]: what byte x of that column adds to the row where it ends up.
    std::array<std::array<std::uint64_t, 256>, 8> rows;
    // What each round adds to the first row of the key.
    std::array<std::uint64_t, WHIRLPOOL_ROUNDS> constants;
};
extern const WhirlpoolTables whirlpoolTables;

} // namespace toolbelt
