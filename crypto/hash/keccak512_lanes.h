// Keccak-f[1600] with a lane in each vector register, which holds its 64 bits whole where the general registers of
// 32-bit code do not; the upper half of a register goes unused. For the files of its tiers alone: each compiles it with
// flags of its own, and everything here belongs to the file that includes it. With AVX-512 the compiler makes one
// instruction of a rotation, and of each logical function of three lanes.
#pragma once

#include <emmintrin.h>

#include "crypto/hash/keccak512.h"
#include "crypto/hash/keccak512_tables.h"
#include "crypto/hash/unroll.h"

namespace toolbelt {
namespace {

using Lane = std::uint64_t __attribute__((vector_size(16)));

struct Lanes
{
    Lane lane[25];
};

template <int BY>
[[gnu::always_inline]] inline Lane rotated(Lane x)
{
    if constexpr (BY == 0) return x;
    return x << BY | x >> (64 - BY);
}

[[gnu::always_inline]] inline Lane loadWord(const void* from)
{
    return Lane(_mm_loadl_epi64(static_cast<const __m128i*>(from)));
}

// The lane that pi moves to this one.
constexpr std::uint32_t sourceOf(std::uint32_t lane)
{
    std::uint32_t source = 0;
    while (KECCAK_MOVES[source] != lane) ++source;
    return source;
}

[[gnu::always_inline]] inline void applyRound(Lanes& next, const Lanes& now, Lane* effect, Lane constant)
{
    const auto& a = now.lane;
    Lane column[5];
    unroll<5>([&]<std::uint32_t X>() __attribute__((always_inline)) {
        column[X] = (a[X] ^ a[X + 5] ^ a[X + 10]) ^ a[X + 15] ^ a[X + 20];
    });
    unroll<5>([&]<std::uint32_t X>() __attribute__((always_inline)) {
        effect[X] = column[(X + 4) % 5] ^ rotated<1>(column[(X + 1) % 5]);
    });
    // Row by row: its lanes from where pi brings them, then chi.
    unroll<5>([&]<std::uint32_t Y>() __attribute__((always_inline)) {
        Lane moved[5];
        unroll<5>([&]<std::uint32_t X>() __attribute__((always_inline)) {
            constexpr std::uint32_t SOURCE = sourceOf(X + 5 * Y);
            moved[X] = rotated<KECCAK_ROTATIONS[SOURCE]>(a[SOURCE] ^ effect[SOURCE % 5]);
        });
        unroll<5>([&]<std::uint32_t X>() __attribute__((always_inline)) {
            next.lane[X + 5 * Y] = moved[X] ^ (~moved[(X + 1) % 5] & moved[(X + 2) % 5]);
        });
    });
    next.lane[0] ^= constant;
}

// The whole of a routine of a tier. What it leaves on the stack, its caller wipes.
[[gnu::always_inline]] inline void absorbLanes(KeccakState& lanes, const std::uint8_t* blocks, std::uint32_t count)
{
    Lanes now, next;
    Lane effect[5];
    for (std::uint32_t i = 0; i < 25; ++i) now.lane[i] = loadWord(&lanes[i]);
    for (; count != 0; --count, blocks += KECCAK_RATE) {
        for (std::uint32_t i = 0; i < KECCAK_RATE / 8; ++i) now.lane[i] ^= loadWord(blocks + 8 * i);
        for (std::uint32_t round = 0; round < KECCAK_ROUNDS; round += 2) {
            applyRound(next, now, effect, loadWord(&KECCAK_CONSTANTS[round]));
            applyRound(now, next, effect, loadWord(&KECCAK_CONSTANTS[round + 1]));
        }
    }
    for (std::uint32_t i = 0; i < 25; ++i) lanes[i] = now.lane[i][0];
}

} // namespace
} // namespace toolbelt
