// Keccak-f[1600] with a lane in each vector register, which holds its 64 bits whole where the general registers of
// 32-bit code do not: compiled with flags of its own. The upper half of a register goes unused.
#include <emmintrin.h>

#include "crypto/hash/keccak512.h"
#include "crypto/hash/keccak512_tables.h"
#include "crypto/hash/unroll.h"

namespace toolbelt {
namespace {

struct Lanes
{
    __m128i lane[25];
};

template <int BY>
[[gnu::always_inline]] inline __m128i rotated(__m128i x)
{
    if constexpr (BY == 0) return x;
    return _mm_xor_si128(_mm_slli_epi64(x, BY), _mm_srli_epi64(x, 64 - BY));
}

[[gnu::always_inline]] inline __m128i loadWord(const void* from)
{
    return _mm_loadl_epi64(static_cast<const __m128i*>(from));
}

// The lane that pi moves to this one.
constexpr std::uint32_t sourceOf(std::uint32_t lane)
{
    std::uint32_t source = 0;
    while (KECCAK_MOVES[source] != lane) ++source;
    return source;
}

[[gnu::always_inline]] inline void applyRound(Lanes& next, const Lanes& now, __m128i* effect, __m128i constant)
{
    const auto& a = now.lane;
    __m128i column[5];
    unroll<5>([&]<std::uint32_t X>() __attribute__((always_inline)) {
        column[X] =
            _mm_xor_si128(_mm_xor_si128(_mm_xor_si128(a[X], a[X + 5]), _mm_xor_si128(a[X + 10], a[X + 15])), a[X + 20]);
    });
    unroll<5>([&]<std::uint32_t X>() __attribute__((always_inline)) {
        effect[X] = _mm_xor_si128(column[(X + 4) % 5], rotated<1>(column[(X + 1) % 5]));
    });
    // Row by row: its lanes from where pi brings them, then chi.
    unroll<5>([&]<std::uint32_t Y>() __attribute__((always_inline)) {
        __m128i moved[5];
        unroll<5>([&]<std::uint32_t X>() __attribute__((always_inline)) {
            constexpr std::uint32_t SOURCE = sourceOf(X + 5 * Y);
            moved[X] = rotated<KECCAK_ROTATIONS[SOURCE]>(_mm_xor_si128(a[SOURCE], effect[SOURCE % 5]));
        });
        unroll<5>([&]<std::uint32_t X>() __attribute__((always_inline)) {
            next.lane[X + 5 * Y] = _mm_xor_si128(moved[X], _mm_andnot_si128(moved[(X + 1) % 5], moved[(X + 2) % 5]));
        });
    });
    next.lane[0] = _mm_xor_si128(next.lane[0], constant);
}

} // namespace

void keccak512AbsorbSse2(KeccakState& lanes, const std::uint8_t* blocks, std::uint32_t count)
{
    struct
    {
        Lanes now, next;
        __m128i effect[5];
    } work;
    for (std::uint32_t i = 0; i < 25; ++i) work.now.lane[i] = loadWord(&lanes[i]);
    for (; count != 0; --count, blocks += KECCAK_RATE) {
        for (std::uint32_t i = 0; i < KECCAK_RATE / 8; ++i)
            work.now.lane[i] = _mm_xor_si128(work.now.lane[i], loadWord(blocks + 8 * i));
        for (std::uint32_t round = 0; round < KECCAK_ROUNDS; round += 2) {
            applyRound(work.next, work.now, work.effect, loadWord(&KECCAK_CONSTANTS[round]));
            applyRound(work.now, work.next, work.effect, loadWord(&KECCAK_CONSTANTS[round + 1]));
        }
    }
    for (std::uint32_t i = 0; i < 25; ++i) _mm_storel_epi64(reinterpret_cast<__m128i*>(&lanes[i]), work.now.lane[i]);
    wipe(&work, sizeof work);
}

} // namespace toolbelt
