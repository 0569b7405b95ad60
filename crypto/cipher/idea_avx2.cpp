// IDEA on sixteen blocks side by side: compiled with flags of its own.
#include "crypto/cipher/idea_wide.h"

namespace toolbelt {
namespace {

// The product modulo 65537, 0 standing for 65536: the low half of the product minus its high half, plus 1 where that is
// negative. The halves are equal where a factor is 0 and nowhere else, as 65537 is a prime; minus the other factor is
// the product then.
[[gnu::always_inline]] inline HalfWords multiply(HalfWords a, std::uint16_t by)
{
    const __m256i x = __m256i(a), b = _mm256_set1_epi16(static_cast<short>(by)), one = _mm256_set1_epi16(1);
    const __m256i low = _mm256_mullo_epi16(x, b), high = _mm256_mulhi_epu16(x, b);
    // One of the two differences is 0, as they stop there.
    const __m256i above = _mm256_subs_epu16(low, high), below = _mm256_subs_epu16(high, low);
    const __m256i usual = _mm256_sub_epi16(above, _mm256_subs_epu16(below, one));
    const __m256i withZero = _mm256_sub_epi16(_mm256_sub_epi16(one, b), x);
    return HalfWords(_mm256_or_si256(usual, _mm256_and_si256(withZero, _mm256_cmpeq_epi16(low, high))));
}

} // namespace

std::uint32_t ideaTransformAvx2(const void* keys, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks)
{
    return transformWideIdea<multiply>(keys, in, out, blocks);
}

} // namespace toolbelt
