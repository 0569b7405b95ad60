// SHA-256 on the processor's SHA instructions: compiled with flags of its own. An instruction does two steps; it wants
// the words in two registers, a, b, e, f and c, d, g, h, the first one in the highest lane.
#include <immintrin.h>

#include "crypto/hash/sha256.h"
#include "crypto/hash/sha2_constants.h"
#include "crypto/hash/unroll.h"

namespace toolbelt {

void sha256CompressShani(Sha256State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    const __m128i bigEndian = _mm_set_epi64x(0x0C0D0E0F08090A0B, 0x0405060700010203);
    auto* const halves = reinterpret_cast<__m128i*>(state.data());
    const __m128i badc = _mm_shuffle_epi32(_mm_loadu_si128(halves), 0xB1);
    const __m128i fehg = _mm_shuffle_epi32(_mm_loadu_si128(halves + 1), 0xB1);
    __m128i abef = _mm_unpacklo_epi64(fehg, badc);
    __m128i cdgh = _mm_unpackhi_epi64(fehg, badc);
    for (; count != 0; --count, blocks += 64) {
        // The state as it is before the block waits where it belongs, so that the stack sees nothing of it.
        _mm_storeu_si128(halves, abef);
        _mm_storeu_si128(halves + 1, cdgh);
        // Opaque here, or all constants would be copied to the stack before the loop.
        const auto* constants = reinterpret_cast<const __m128i*>(SHA256_CONSTANTS.data());
        __asm__("" : "+r"(constants));
        __m128i w[4]; // the last 16 words of the schedule, in a ring
        unroll<16>([&]<std::uint32_t I>() __attribute__((always_inline)) {
            __m128i& now = w[I % 4];
            if constexpr (I < 4) {
                // No word is loaded earlier than it is needed: so the registers suffice, and none is put by on the
                // stack.
                __asm__("" : "+x"(abef), "+x"(cdgh) : : "memory");
                now = _mm_loadu_si128(reinterpret_cast<const __m128i*>(blocks) + I);
                now = _mm_shuffle_epi8(now, bigEndian);
            } else {
                const __m128i late = w[(I + 3) % 4];
                now = _mm_sha256msg1_epu32(now, w[(I + 1) % 4]);
                now = _mm_add_epi32(now, _mm_alignr_epi8(late, w[(I + 2) % 4], 4));
                now = _mm_sha256msg2_epu32(now, late);
            }
            const __m128i added = _mm_add_epi32(now, _mm_load_si128(constants + I));
            cdgh = _mm_sha256rnds2_epu32(cdgh, abef, added);
            abef = _mm_sha256rnds2_epu32(abef, cdgh, _mm_shuffle_epi32(added, 0x0E));
        });
        abef = _mm_add_epi32(abef, _mm_loadu_si128(halves));
        cdgh = _mm_add_epi32(cdgh, _mm_loadu_si128(halves + 1));
    }
    _mm_storeu_si128(halves, _mm_shuffle_epi32(_mm_unpackhi_epi64(abef, cdgh), 0xB1));
    _mm_storeu_si128(halves + 1, _mm_shuffle_epi32(_mm_unpacklo_epi64(abef, cdgh), 0xB1));
}

} // namespace toolbelt
