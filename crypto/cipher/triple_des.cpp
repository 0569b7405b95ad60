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

void encryptBlock(const TripleDesSchedule& key, const std::uint8_t* in, std::uint8_t* out)
{
    DesHalves block = desEncryptRounds(key.K1, desInitialPermutation(in));
    block = desDecryptRounds(key.K2, block);
    desFinalPermutation(out, desEncryptRounds(key.K3, block));
}

void decryptBlock(const TripleDesSchedule& key, const std::uint8_t* in, std::uint8_t* out)
{
    DesHalves block = desDecryptRounds(key.K3, desInitialPermutation(in));
    block = desEncryptRounds(key.K2, block);
    desFinalPermutation(out, desDecryptRounds(key.K1, block));
}

} // namespace

class cAlg3des final : public BlockCipher<8, TripleDesSchedule, encryptBlock, decryptBlock>
{
public:
    using BlockCipher::BlockCipher;
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
