// Triple DES (FIPS 46-3, EDE with three independent keys): 8-byte blocks, 24-byte keys K1 K2 K3.
#include "crypto/cipher/creators.h"
#include "crypto/cipher/des.h"
#include "crypto/cipher/member.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t KEY_BYTES = 24;

struct TripleDesSchedule
{
    DesSchedule K1, K2, K3;
};

template <std::uint32_t N>
void encryptBlocks(const TripleDesSchedule& key, const std::uint8_t* in, std::uint8_t* out)
{
    DesHalves<N> block = desEncryptRounds(key.K1, desInitialPermutation<N>(in));
    block = desDecryptRounds(key.K2, block);
    desFinalPermutation(out, desEncryptRounds(key.K3, block));
}

template <std::uint32_t N>
void decryptBlocks(const TripleDesSchedule& key, const std::uint8_t* in, std::uint8_t* out)
{
    DesHalves<N> block = desDecryptRounds(key.K3, desInitialPermutation<N>(in));
    block = desEncryptRounds(key.K2, block);
    desFinalPermutation(out, desDecryptRounds(key.K1, block));
}

} // namespace

class cAlg3des final : public SideBySideCipher<8, TripleDesSchedule, encryptBlocks<1>, encryptBlocks<SIDE>,
                                               decryptBlocks<1>, decryptBlocks<SIDE>>
{
public:
    using SideBySideCipher::SideBySideCipher;
};

cSymAlg* create3des(const std::uint8_t* key, std::uint32_t keyLength)
{
    const PaddedKey<KEY_BYTES> padded(key, keyLength);
    if (!padded) return nullptr;
    auto cipher = newCipher<cAlg3des>(KEY_BYTES);
    if (cipher) {
        desExpandKey(cipher->schedule->K1, padded.data());
        desExpandKey(cipher->schedule->K2, padded.data() + 8);
        desExpandKey(cipher->schedule->K3, padded.data() + 16);
    }
    return cipher.release();
}

} // namespace toolbelt
