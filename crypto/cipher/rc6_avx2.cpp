// RC6 on eight blocks side by side: compiled with flags of its own.
#include <immintrin.h>

#include "crypto/cipher/rc6_rounds.h"
#include "crypto/cipher/wide_words.h"

namespace toolbelt {
namespace {

// The shifts give 0 for amounts above 31.
[[gnu::always_inline]] inline Words rotr(Words words, Words by)
{
    const Words right = by & 31, left = 32 - right;
    return Words(_mm256_or_si256(_mm256_srlv_epi32(__m256i(words), __m256i(right)),
                                 _mm256_sllv_epi32(__m256i(words), __m256i(left))));
}

} // namespace

std::uint32_t rc6DecryptAvx2(const void* keys, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks)
{
    const auto* const S = static_cast<const std::uint32_t*>(keys);
    return transformPairs<4>(in, out, blocks, [S](auto& x) { decryptRounds(S, x, rotr); });
}

} // namespace toolbelt
