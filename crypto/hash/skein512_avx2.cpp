// Skein-512 on vector registers, which hold 64-bit words whole where the general ones of 32-bit code do not: compiled
// with flags of its own. Words 0, 2, 4, 6 lie in two registers and 1, 3, 5, 7 in two others, so that a round is the
// same for two pairs of words; only AVX2 rotates the halves of a register by different amounts.
#include <immintrin.h>

#include "crypto/hash/skein512.h"
#include "crypto/hash/threefish512.h"
#include "crypto/hash/unroll.h"

namespace toolbelt {
namespace {

struct Words
{
    __m128i even[2], odd[2];
};

// Key and tweak as the subkeys want them: keys[i] holds words i and i + 2 of the key with its parity word, which goes
// round after nine, and a tweak word stands alone in the low or the high half.
struct Schedule
{
    __m128i keys[9], low[3], high[3];
};

[[gnu::always_inline]] inline void makeSchedule(Schedule& schedule, const Skein512State& state)
{
    const auto* const chain = reinterpret_cast<const __m128i*>(state.chain.data());
    const __m128i k01 = _mm_loadu_si128(chain), k23 = _mm_loadu_si128(chain + 1);
    const __m128i k45 = _mm_loadu_si128(chain + 2), k67 = _mm_loadu_si128(chain + 3);
    __m128i parity = _mm_xor_si128(_mm_xor_si128(k01, k23), _mm_xor_si128(k45, k67));
    parity = _mm_xor_si128(parity, _mm_unpackhi_epi64(parity, parity));
    parity = _mm_xor_si128(parity, _mm_set_epi64x(0, THREEFISH_PARITY)); // the low half is the word
    schedule.keys[0] = _mm_unpacklo_epi64(k01, k23);
    schedule.keys[1] = _mm_unpackhi_epi64(k01, k23);
    schedule.keys[2] = _mm_unpacklo_epi64(k23, k45);
    schedule.keys[3] = _mm_unpackhi_epi64(k23, k45);
    schedule.keys[4] = _mm_unpacklo_epi64(k45, k67);
    schedule.keys[5] = _mm_unpackhi_epi64(k45, k67);
    schedule.keys[6] = _mm_unpacklo_epi64(k67, parity);
    schedule.keys[7] = _mm_unpacklo_epi64(_mm_unpackhi_epi64(k67, k67), k01);
    schedule.keys[8] = _mm_unpacklo_epi64(parity, _mm_unpackhi_epi64(k01, k01));
    const auto wordOf = [](std::uint64_t word) { return _mm_set_epi64x(0, static_cast<long long>(word)); };
    const __m128i position = wordOf(state.position), flags = wordOf(state.flags);
    const __m128i tweak[3] = {position, flags, _mm_xor_si128(position, flags)};
    for (std::uint32_t i = 0; i < 3; ++i) {
        schedule.low[i] = tweak[i];
        schedule.high[i] = _mm_slli_si128(tweak[i], 8);
    }
}

template <std::uint32_t S>
[[gnu::always_inline]] inline void addSubkey(Words& x, const Schedule& schedule)
{
    const auto add = [&](__m128i& words, __m128i more) { words = _mm_add_epi64(words, more); };
    add(x.even[0], schedule.keys[S % 9]);
    add(x.odd[0], schedule.keys[(S + 1) % 9]);
    add(x.even[1], _mm_add_epi64(schedule.keys[(S + 4) % 9], schedule.high[(S + 1) % 3]));
    add(x.odd[1], _mm_add_epi64(schedule.keys[(S + 5) % 9], _mm_add_epi64(schedule.low[S % 3], _mm_set_epi64x(S, 0))));
}

// A round and the permutation behind it; after four rounds each word is where it was.
template <std::uint32_t ROUND>
[[gnu::always_inline]] inline void applyRound(Words& x)
{
    constexpr auto& R = THREEFISH_ROTATIONS[ROUND];
    const __m128i left[2] = {_mm_set_epi64x(R[1], R[0]), _mm_set_epi64x(R[3], R[2])};
    const __m128i right[2] = {_mm_set_epi64x(64 - R[1], 64 - R[0]), _mm_set_epi64x(64 - R[3], 64 - R[2])};
    __m128i even[2], odd[2];
#pragma GCC unroll 2
    for (int i = 0; i < 2; ++i) {
        even[i] = _mm_add_epi64(x.even[i], x.odd[i]);
        odd[i] = _mm_xor_si128(_mm_xor_si128(_mm_srlv_epi64(x.odd[i], right[i]), even[i]),
                               _mm_sllv_epi64(x.odd[i], left[i]));
    }
    x.even[0] = _mm_alignr_epi8(even[1], even[0], 8);
    x.even[1] = _mm_alignr_epi8(even[0], even[1], 8);
    x.odd[0] = _mm_blend_epi32(odd[0], odd[1], 0xC);
    x.odd[1] = _mm_blend_epi32(odd[1], odd[0], 0xC);
}

} // namespace

void skein512CompressAvx2(Skein512State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    Schedule schedule;
    for (; count != 0; --count, blocks += 64) {
        state.position += 64;
        makeSchedule(schedule, state);
        const auto* const from = reinterpret_cast<const __m128i*>(blocks);
        const __m128i m[4] = {_mm_loadu_si128(from), _mm_loadu_si128(from + 1), _mm_loadu_si128(from + 2),
                              _mm_loadu_si128(from + 3)};
        Words x = {{_mm_unpacklo_epi64(m[0], m[1]), _mm_unpacklo_epi64(m[2], m[3])},
                   {_mm_unpackhi_epi64(m[0], m[1]), _mm_unpackhi_epi64(m[2], m[3])}};
        unroll<THREEFISH_SUBKEYS - 1>([&]<std::uint32_t S>() __attribute__((always_inline)) {
            addSubkey<S>(x, schedule);
            constexpr std::uint32_t FIRST = S % 2 * 4;
            applyRound<FIRST>(x);
            applyRound<FIRST + 1>(x);
            applyRound<FIRST + 2>(x);
            applyRound<FIRST + 3>(x);
        });
        addSubkey<THREEFISH_SUBKEYS - 1>(x, schedule);
        auto* const chain = reinterpret_cast<__m128i*>(state.chain.data());
        for (int i = 0; i < 2; ++i) {
            const __m128i front = _mm_unpacklo_epi64(x.even[i], x.odd[i]);
            const __m128i back = _mm_unpackhi_epi64(x.even[i], x.odd[i]);
            _mm_storeu_si128(chain + 2 * i, _mm_xor_si128(front, _mm_loadu_si128(from + 2 * i)));
            _mm_storeu_si128(chain + 2 * i + 1, _mm_xor_si128(back, _mm_loadu_si128(from + 2 * i + 1)));
        }
        state.flags &= ~SKEIN_FLAG_FIRST;
    }
    wipe(&schedule, sizeof schedule);
}

} // namespace toolbelt
