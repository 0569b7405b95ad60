// RC6 on sixteen blocks side by side: compiled with flags of its own.
#include <immintrin.h>

#include "crypto/cipher/rc6_rounds.h"
#include "crypto/cipher/wide_words.h"

namespace toolbelt {
namespace {

[[gnu::always_inline]] inline Words rotr(Words words, Words by)
{
    return Words(_mm512_rorv_epi32(__m512i(words), __m512i(by)));
}

} // namespace

std::uint32_t rc6DecryptAvx512(const void* keys, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks)
{
    const auto* const S = static_cast<const std::uint32_t*>(keys);
    return transformWide<1, 4>(in, out, blocks, [S](Words(&x)[1][4]) { decryptRounds(S, x, rotr); });
}

} // namespace toolbelt
