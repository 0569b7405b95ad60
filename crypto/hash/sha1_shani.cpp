// SHA-1 on the processor's SHA instructions: compiled with flags of its own. An instruction does four steps; the words
// a, b, c, d lie in one register, a in its highest lane, and e is what a was four steps before, rotated.
#include <immintrin.h>

#include "crypto/hash/sha1.h"
#include "crypto/hash/unroll.h"

namespace toolbelt {

void sha1CompressShani(Sha1State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    // Sixteen bytes as four big-endian words, the first one in the highest lane.
    const __m128i reversed = _mm_set_epi64x(0x0001020304050607, 0x08090A0B0C0D0E0F);
    auto* const words = reinterpret_cast<__m128i*>(state.data());
    __m128i abcd = _mm_shuffle_epi32(_mm_loadu_si128(words), 0x1B);
    __m128i e = _mm_set_epi32(static_cast<int>(state[4]), 0, 0, 0);
    for (; count != 0; --count, blocks += 64) {
        // The state as it is before the block waits in memory.
        __m128i eBefore;
        _mm_storeu_si128(words, abcd);
        _mm_store_si128(&eBefore, e);
        __m128i w[4]; // the last 16 words of the schedule, in a ring
        unroll<20>([&]<std::uint32_t I>() __attribute__((always_inline)) {
            __m128i& now = w[I % 4];
            if constexpr (I < 4) {
                // No word is loaded earlier than it is needed: so the registers suffice.
                __asm__("" : "+x"(abcd), "+x"(e), "+m"(eBefore) : : "memory");
                now = _mm_loadu_si128(reinterpret_cast<const __m128i*>(blocks) + I);
                now = _mm_shuffle_epi8(now, reversed);
            } else {
                now = _mm_xor_si128(_mm_sha1msg1_epu32(now, w[(I + 1) % 4]), w[(I + 2) % 4]);
                now = _mm_sha1msg2_epu32(now, w[(I + 3) % 4]);
            }
            const __m128i added = I == 0 ? _mm_add_epi32(e, now) : _mm_sha1nexte_epu32(e, now);
            e = abcd;
            abcd = _mm_sha1rnds4_epu32(abcd, added, I / 5);
        });
        e = _mm_sha1nexte_epu32(e, eBefore);
        abcd = _mm_add_epi32(abcd, _mm_loadu_si128(words));
    }
    _mm_storeu_si128(words, _mm_shuffle_epi32(abcd, 0x1B));
    state[4] = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_shuffle_epi32(e, 0xFF)));
}

} // namespace toolbelt
