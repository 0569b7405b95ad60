// IDEA on sixteen blocks side by side: compiled with flags of its own.
#include "crypto/cipher/idea_rounds.h"
#include "crypto/cipher/wide_avx2.h"

namespace toolbelt {
namespace {

using HalfWords = std::uint16_t __attribute__((vector_size(32)));

// The product modulo 65537, 0 standing for 65536: the low half of the product minus its high half, or, when a factor is
// 0, minus the other one.
HalfWords multiply(HalfWords a, std::uint16_t by)
{
    const __m256i b = _mm256_set1_epi16(static_cast<short>(by));
    const HalfWords low = a * by, high = HalfWords(_mm256_mulhi_epu16(__m256i(a), b));
    const HalfWords usual = low - high - HalfWords(low < high), withZero = 1 - a - by;
    const HalfWords zero = HalfWords((low | high) == 0);
    return (usual & ~zero) | (withZero & zero);
}

// The bytes of each 16-bit word in the other order.
__m256i swapped(__m256i x)
{
    return _mm256_or_si256(_mm256_slli_epi16(x, 8), _mm256_srli_epi16(x, 8));
}

// Even 16-bit words of a and of b, and odd ones; the same again takes it back.
void exchange(Words& a, Words& b)
{
    const Words even = (a & 0xFFFF) | b << 16;
    b = a >> 16 | (b & 0xFFFF0000);
    a = even;
}

} // namespace

std::uint32_t ideaTransformAvx2(const void* keys, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks)
{
    const std::uint32_t done = blocks / (2 * WIDE_BLOCKS) * (2 * WIDE_BLOCKS);
    for (std::uint32_t i = 0; i < done; i += 2 * WIDE_BLOCKS, in += 128, out += 128) {
        Words front[2], back[2]; // the front halves of eight blocks each, and the back halves
        for (int j = 0; j < 2; ++j) {
            const __m256 a = _mm256_castsi256_ps(swapped(loadWide(in + 64 * j)));
            const __m256 b = _mm256_castsi256_ps(swapped(loadWide(in + 64 * j + 32)));
            front[j] = Words(_mm256_shuffle_ps(a, b, 0x88));
            back[j] = Words(_mm256_shuffle_ps(a, b, 0xDD));
        }
        exchange(front[0], front[1]);
        exchange(back[0], back[1]);
        HalfWords x[4] = {HalfWords(front[0]), HalfWords(front[1]), HalfWords(back[0]), HalfWords(back[1])};
        transformRounds(static_cast<const std::uint16_t*>(keys), x, multiply);
        for (int j = 0; j < 2; ++j) front[j] = Words(x[j]), back[j] = Words(x[2 + j]);
        exchange(front[0], front[1]);
        exchange(back[0], back[1]);
        for (int j = 0; j < 2; ++j) {
            const __m256i a = __m256i(front[j]), b = __m256i(back[j]);
            storeWide(out + 64 * j, swapped(_mm256_unpacklo_epi32(a, b)));
            storeWide(out + 64 * j + 32, swapped(_mm256_unpackhi_epi32(a, b)));
        }
    }
    return done;
}

} // namespace toolbelt
