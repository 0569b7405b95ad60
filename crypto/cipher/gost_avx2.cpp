// GOST 28147-89 on eight blocks side by side, its boxes looked up in registers: compiled with flags of its own. No
// memory is addressed by secret data here.
#include <immintrin.h>

#include "crypto/cipher/gost_rounds.h"
#include "crypto/cipher/wide_words.h"

namespace toolbelt {
namespace {

// For each box a table of its byte: the box's output in the nibble where it belongs.
struct BoxTables
{
    alignas(16) std::uint8_t box[8][16];
};
constexpr BoxTables boxTables = [] {
    BoxTables tables = {};
    for (int n = 0; n < 8; ++n)
        for (int i = 0; i < 16; ++i) tables.box[n][i] = static_cast<std::uint8_t>(K[n][i] << (n % 2 * 4));
    return tables;
}();

// The nibbles of all bytes through the boxes of that nibble. An index with its top bit set looks up zero: that is how
// each byte of a word meets its own box alone.
__m256i lookUp(__m256i nibbles, int first)
{
    __m256i found = _mm256_setzero_si256();
#pragma GCC unroll 4
    for (int byte = 0; byte < 4; ++byte) {
        const __m256i others = _mm256_set1_epi32(static_cast<int>(0x80808080 & ~(0xFFu << 8 * byte)));
        const __m256i table = _mm256_broadcastsi128_si256(
            _mm_load_si128(reinterpret_cast<const __m128i*>(boxTables.box[2 * byte + first])));
        found = _mm256_or_si256(found, _mm256_shuffle_epi8(table, _mm256_or_si256(nibbles, others)));
    }
    return found;
}

Words f(Words sum)
{
    const __m256i nibble = _mm256_set1_epi8(0x0F), x = __m256i(sum);
    const __m256i low = lookUp(_mm256_and_si256(x, nibble), 0);
    const __m256i high = lookUp(_mm256_and_si256(_mm256_srli_epi32(x, 4), nibble), 1);
    const Words found = Words(_mm256_or_si256(low, high));
    return found << 11 | found >> 21;
}

} // namespace

std::uint32_t gostDecryptAvx2(const void* keys, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks)
{
    const auto* const key = static_cast<const std::uint32_t*>(keys);
    return transformWide<1, 2>(in, out, blocks, [key](Words(&x)[1][2]) {
        transformRounds<1>(key, x[0][0], x[0][1], f);
        std::swap(x[0][0], x[0][1]);
    });
}

} // namespace toolbelt
