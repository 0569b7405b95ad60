// The tables of Whirlpool, 16 KiB, which its routines have in common.
#pragma once

#include <array>
#include <cstdint>

namespace toolbelt {

inline constexpr std::uint32_t WHIRLPOOL_ROUNDS = 10;

struct WhirlpoolTables
{
    // rows[column][x]: what byte x of that column adds to the row where it ends up.
    std::array<std::array<std::uint64_t, 256>, 8> rows;
    // What each round adds to the first row of the key.
    std::array<std::uint64_t, WHIRLPOOL_ROUNDS> constants;
};
extern const WhirlpoolTables whirlpoolTables;

} // namespace toolbelt
