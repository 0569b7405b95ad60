// Serpent on eight blocks side by side: compiled with flags of its own.
#include "crypto/cipher/serpent_rounds.h"
#include "crypto/cipher/wide_words.h"

namespace toolbelt {

std::uint32_t serpentDecryptAvx2(const void* keys, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks)
{
    const auto* const K = static_cast<const SerpentKey*>(keys);
    return transformPairs<4>(in, out, blocks, [K](auto& x) { decryptRounds(K, x); });
}

} // namespace toolbelt
