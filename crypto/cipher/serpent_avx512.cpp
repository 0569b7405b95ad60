// Serpent on sixteen blocks side by side: compiled with flags of its own.
#include "crypto/cipher/serpent_rounds.h"
#include "crypto/cipher/wide_words.h"

namespace toolbelt {

std::uint32_t serpentDecryptAvx512(const void* keys, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks)
{
    const auto* const K = static_cast<const SerpentKey*>(keys);
    return transformWide<1, 4>(in, out, blocks, [K](Words(&x)[1][4]) { decryptRounds(K, x); });
}

} // namespace toolbelt
