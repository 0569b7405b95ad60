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

// The nibbles of all bytes through the boxes of that nibble: those of bytes 0 and 2 of a word, and those of 1 and 3. An
// index with its top bit set looks up zero, which leaves the bytes between to the other two.
template <int FIRST>
[[gnu::always_inline]] inline __m256i lookUp(__m256i nibbles)
{
    const auto found = [=](int byte, __m256i at) __attribute__((always_inline))
    {
        const auto* table = reinterpret_cast<const __m128i*>(boxTables.box[2 * byte + FIRST]);
        return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(_mm_load_si128(table)), at);
    };
    const __m256i even = _mm256_or_si256(nibbles, _mm256_set1_epi16(static_cast<short>(0x8000)));
    const __m256i odd = _mm256_or_si256(nibbles, _mm256_set1_epi16(0x0080));
    return _mm256_or_si256(_mm256_blend_epi16(found(0, even), found(2, even), 0xAA),
                           _mm256_blend_epi16(found(1, odd), found(3, odd), 0xAA));
}

[[gnu::always_inline]] inline Words f(Words sum)
{
    const __m256i nibble = _mm256_set1_epi8(0x0F), x = __m256i(sum);
    const __m256i low = lookUp<0>(_mm256_and_si256(x, nibble));
    const __m256i high = lookUp<1>(_mm256_and_si256(_mm256_srli_epi32(x, 4), nibble));
    const Words found = Words(_mm256_or_si256(low, high));
    return found << 11 | found >> 21;
}

} // namespace

std::uint32_t gostDecryptAvx2(const void* keys, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks)
{
    const auto* const key = static_cast<const std::uint32_t*>(keys);
    return transformPairs<2>(in, out, blocks, [key](auto& x) { transformRounds<1>(key, x, f); });
}

} // namespace toolbelt
