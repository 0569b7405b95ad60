// Rijndael on AES instructions, a block a register: compiled with flags of its own.
#include "crypto/cipher/rijndael_vector.h"

namespace toolbelt {
namespace {

// The encryption of CBC and of CFB: each block waits for the one before. What can be done without it is done aside.
template <Chain CHAIN>
void encryptChained(const std::uint32_t* keys, std::uint32_t rounds, std::uint8_t* chain, const std::uint8_t* in,
                    std::uint8_t* out, std::uint32_t blocks)
{
    const __m128i firstKey = OneBlock::load(keys), lastKey = OneBlock::load(keys + 4 * rounds);
    __m128i before = OneBlock::load(chain);
    for (; blocks != 0; --blocks, in += BLOCK, out += BLOCK) {
        const __m128i text = OneBlock::load(in);
        __m128i state = CHAIN == Chain::CBC ? OneBlock::xored(before, OneBlock::xored(text, firstKey))
                                            : OneBlock::xored(before, firstKey);
        for (std::uint32_t i = 1; i < rounds; ++i) state = OneBlock::encrypt(state, OneBlock::load(keys + 4 * i));
        before = OneBlock::encryptLast(state, CHAIN == Chain::CBC ? lastKey : OneBlock::xored(lastKey, text));
        OneBlock::store(out, before);
    }
    OneBlock::store(chain, before);
}

} // namespace

const RijndaelTier rijndaelAesni = {
    transformBlocks<OneBlock, Direction::ENCRYPT>,
    transformBlocks<OneBlock, Direction::DECRYPT>,
    decryptChained<OneBlock, Direction::DECRYPT, Chain::CBC>,
    decryptChained<OneBlock, Direction::ENCRYPT, Chain::CFB>,
};

void rijndaelCbcEncryptAesni(const std::uint32_t* keys, std::uint32_t rounds, std::uint8_t* chain,
                             const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks)
{
    encryptChained<Chain::CBC>(keys, rounds, chain, in, out, blocks);
}

void rijndaelCfbEncryptAesni(const std::uint32_t* keys, std::uint32_t rounds, std::uint8_t* chain,
                             const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks)
{
    encryptChained<Chain::CFB>(keys, rounds, chain, in, out, blocks);
}

void rijndaelInvertKeysAesni(std::uint32_t* decryption, const std::uint32_t* encryption, std::uint32_t rounds)
{
    const std::uint32_t* last = encryption + 4 * rounds;
    OneBlock::store(decryption, OneBlock::load(last));
    for (std::uint32_t i = 1; i < rounds; ++i)
        OneBlock::store(decryption + 4 * i, _mm_aesimc_si128(OneBlock::load(last - 4 * i)));
    OneBlock::store(decryption + 4 * rounds, OneBlock::load(encryption));
}

} // namespace toolbelt
