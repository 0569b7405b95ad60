// Rijndael on AES instructions, a block a register: compiled with flags of its own.
#include "crypto/cipher/rijndael_vector.h"

namespace toolbelt {
namespace {

// The encryption of CBC and of CFB: each block waits for the one before. What it waits for is the last round alone:
// that is done twice, once for the ciphertext and once, with everything in its key that is XORed to it, for what the
// next block starts from.
template <Chain CHAIN>
void encryptChained(const std::uint32_t* keys, std::uint32_t rounds, std::uint8_t* chain, const std::uint8_t* in,
                    std::uint8_t* out, std::uint32_t blocks)
{
    if (blocks == 0) return;
    const __m128i firstKey = OneBlock::load(keys), lastKey = OneBlock::load(keys + 4 * rounds);
    const __m128i bothKeys = OneBlock::xored(firstKey, lastKey);
    __m128i state = OneBlock::xored(OneBlock::load(chain), firstKey);
    if (CHAIN == Chain::CBC) state = OneBlock::xored(state, OneBlock::load(in));
    const auto transform = [&](std::uint32_t first, std::uint32_t last) __attribute__((always_inline))
    {
#pragma GCC unroll 9
        for (std::uint32_t i = first; i <= last; ++i) state = OneBlock::encrypt(state, OneBlock::load(keys + 4 * i));
    };
    for (;; in += BLOCK, out += BLOCK) {
        transform(1, 9);
        if (rounds > 10) transform(10, 11);
        if (rounds > 12) transform(12, 13);
        const bool isLast = --blocks == 0;
        // In CBC the text of the next block, which there is none of in the end.
        const __m128i text = OneBlock::load(CHAIN == Chain::CBC && !isLast ? in + BLOCK : in);
        const __m128i cipher =
            OneBlock::encryptLast(state, CHAIN == Chain::CBC ? lastKey : OneBlock::xored(lastKey, text));
        state = OneBlock::encryptLast(state, OneBlock::xored(bothKeys, text));
        OneBlock::store(out, cipher);
        if (isLast) {
            OneBlock::store(chain, cipher);
            return;
        }
    }
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

void rijndaelExpandKeyAesni(std::uint32_t* keys, const std::uint8_t* key, std::uint32_t keyLength)
{
    // Four words of the key before and what the first of them takes up; it goes on from each to the next.
    const auto next = [](__m128i words, __m128i first) {
        words = _mm_xor_si128(words, _mm_slli_si128(words, 4));
        words = _mm_xor_si128(words, _mm_slli_si128(words, 8));
        return _mm_xor_si128(words, first);
    };
    // Word 1 or 3 rotated and substituted, with the constant of a step, or word 3 substituted.
    const auto rotated1 = [](__m128i x, int rcon) {
        return _mm_xor_si128(_mm_shuffle_epi32(_mm_aeskeygenassist_si128(x, 0), 0x55), _mm_set1_epi32(rcon));
    };
    const auto rotated3 = [](__m128i x, int rcon) {
        return _mm_xor_si128(_mm_shuffle_epi32(_mm_aeskeygenassist_si128(x, 0), 0xFF), _mm_set1_epi32(rcon));
    };
    const auto substituted3 = [](__m128i x) { return _mm_shuffle_epi32(_mm_aeskeygenassist_si128(x, 0), 0xAA); };
    constexpr int RCON[10] = {0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80, 0x1B, 0x36};
    const std::uint8_t* const tail = key + 16;
    auto* const words = reinterpret_cast<std::uint8_t*>(keys);
    __m128i a = OneBlock::load(key), b;
    OneBlock::store(words, a);
    switch (keyLength) {
    case 16:
        for (int i = 0; i < 10; ++i) {
            a = next(a, rotated3(a, RCON[i]));
            OneBlock::store(words + 16 * (i + 1), a);
        }
        break;
    case 24:
        b = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(tail));
        for (int i = 0; i < 8; ++i) {
            _mm_storel_epi64(reinterpret_cast<__m128i*>(words + 24 * i + 16), b);
            a = next(a, rotated1(b, RCON[i]));
            OneBlock::store(words + 24 * (i + 1), a);
            b = _mm_xor_si128(_mm_xor_si128(b, _mm_slli_si128(b, 4)), _mm_shuffle_epi32(a, 0xFF));
        }
        break;
    default:
        b = OneBlock::load(tail);
        for (int i = 0;; ++i) {
            OneBlock::store(words + 32 * i + 16, b);
            a = next(a, rotated3(b, RCON[i]));
            OneBlock::store(words + 32 * (i + 1), a);
            if (i == 6) break;
            b = next(b, substituted3(a));
        }
    }
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
