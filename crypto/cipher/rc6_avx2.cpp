// RC6 on eight blocks side by side: compiled with flags of its own.
#include "crypto/cipher/rc6_rounds.h"
#include "crypto/cipher/wide_avx2.h"

namespace toolbelt {

std::uint32_t rc6DecryptAvx2(const void* keys, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks)
{
    const auto* const S = static_cast<const std::uint32_t*>(keys);
    return transformWide16(in, out, blocks, [S](Words(&x)[4]) { decryptRounds(S, x); });
}

} // namespace toolbelt
