// ARIA (RFC 5794): 16-byte blocks, keys of 16, 24 and 32 bytes, 12, 14 or 16 rounds. A 128-bit value is four big-endian
// words, the first one holding bytes 0 to 3.
#include <bit>

#include "crypto/base/bytes.h"
#include "crypto/base/cpu.h"
#include "crypto/cipher/aria_rounds.h"
#include "crypto/cipher/creators.h"
#include "crypto/cipher/member.h"

namespace toolbelt {
namespace {

using Table = std::array<std::uint32_t, 256>;
using Layer = std::array<const ByteBox*, 4>; // the S-box of byte 0, 1, 2 and 3 of a word

// The substitution layers: SL1 for the odd rounds, SL2 for the even ones.
constexpr Layer SL1 = {&S1, &S2, &X1, &X2};
constexpr Layer SL2 = {&X1, &X2, &S1, &S2};

// A substituted byte put into the three other bytes of its word: the first step of the diffusion.
constexpr std::array<Table, 4> makeTables(const Layer& layer)
{
    std::array<Table, 4> tables = {};
    for (std::uint32_t byte = 0; byte < 4; ++byte)
        for (std::uint32_t x = 0; x < 256; ++x)
            tables[byte][x] = ((*layer[byte])[x] * 0x01010101u) & ~(0xFF000000u >> 8 * byte);
    return tables;
}
constexpr std::array<Table, 4> spreadSL1 = makeTables(SL1);
constexpr std::array<Table, 4> spreadSL2 = makeTables(SL2);

struct ARIASchedule
{
    ARIAKeys encryption;
    ARIAKeys decryption;
    WideBlocks* transformWide; // either direction: it lies in the keys
};

// The diffusion layer A is the product of four steps: each byte into the three others of its word, the words into each
// other, the bytes within words 1 to 3 exchanged, the words into each other again. These are the last three.
[[gnu::always_inline]] inline void diffuseWords(Value& v)
{
    mixWords(v);
    v.w[1] = (v.w[1] << 8 & 0xFF00FF00) | (v.w[1] >> 8 & 0x00FF00FF);
    v.w[2] = std::rotl(v.w[2], 16);
    v.w[3] = __builtin_bswap32(v.w[3]);
    mixWords(v);
}

// A by itself. Like rotateRight it writes where the round key belongs: a value returned would stay on the stack.
void diffuse(Value& v)
{
    for (std::uint32_t& w : v.w) {
        const std::uint32_t pairs = w ^ std::rotl(w, 8);
        w ^= pairs ^ std::rotl(pairs, 16); // each byte: the sum of the four, less itself
    }
    diffuseWords(v);
}

// A round: v = A(SL(v ^ key)). Inlined, or the block would pass through memory.
[[gnu::always_inline]] inline void round(Value& v, const Value& key, const std::array<Table, 4>& spread)
{
    v ^= key;
#pragma GCC unroll 4
    for (std::uint32_t& w : v.w)
        w = spread[0][w >> 24] ^ spread[1][w >> 16 & 255] ^ spread[2][w >> 8 & 255] ^ spread[3][w & 255];
    diffuseWords(v);
}

void transformBlock(const ARIAKeys& schedule, const std::uint8_t* in, std::uint8_t* out)
{
    const Value* keys = schedule.key;
    std::uint32_t rounds = schedule.rounds;
    Value v;
    for (std::uint32_t i = 0; i < 4; ++i) v.w[i] = load32be(in + 4 * i);
    for (; rounds > 2; rounds -= 2, keys += 2) {
        round(v, keys[0], spreadSL1);
        round(v, keys[1], spreadSL2);
    }
    round(v, keys[0], spreadSL1);
    v ^= keys[1]; // the last round has a key in place of the diffusion
    for (std::uint32_t i = 0; i < 4; ++i) {
        const std::uint32_t w = v.w[i];
        const std::uint32_t substituted = std::uint32_t(X1[w >> 24]) << 24 | std::uint32_t(X2[w >> 16 & 255]) << 16 |
                                          std::uint32_t(S1[w >> 8 & 255]) << 8 | std::uint32_t(S2[w & 255]);
        store32be(out + 4 * i, substituted ^ keys[2].w[i]);
    }
}

// by is not a multiple of 32; rotated is not v.
void rotateRight(Value& rotated, const Value& v, std::uint32_t by)
{
    for (std::uint32_t i = 0; i < 4; ++i) {
        const std::uint32_t low = v.w[(i - by / 32) % 4], high = v.w[(i - by / 32 - 1) % 4];
        rotated.w[i] = low >> by % 32 | high << (32 - by % 32);
    }
}

// keyLength is 16, 24 or 32.
[[gnu::noinline]] void expandKey(ARIASchedule& schedule, const std::uint8_t* key, std::uint32_t keyLength)
{
    constexpr Value C[3] = {{{0x517CC1B7, 0x27220A94, 0xFE13ABE8, 0xFA9A6EE0}},
                            {{0x6DB14ACC, 0x9E21C820, 0xFF28B1D5, 0xEF5DE2B0}},
                            {{0xDB92371D, 0x2126E970, 0x03249775, 0x04E8C90E}}};
    const std::uint32_t first = keyLength / 8 - 2; // CK1 is C1, C2 or C3, the others follow in turn

    Value W[4] = {}; // W0 = KL, W1 starts as KR
    const WipeOnExit wipeW(W);
    for (std::uint32_t i = 0; i < keyLength / 4; ++i) W[i / 4].w[i % 4] = load32be(key + 4 * i);
    for (std::uint32_t i = 0; i < 3; ++i) {
        Value v = W[i];
        const WipeOnExit wipeV(v);
        round(v, C[(first + i) % 3], i % 2 == 0 ? spreadSL1 : spreadSL2);
        W[i + 1] ^= v;
        if (i != 0) W[i + 1] ^= W[i - 1];
    }

    const std::uint32_t rounds = 12 + 2 * first;
    schedule.encryption.rounds = schedule.decryption.rounds = rounds;
    constexpr std::uint32_t rotations[5] = {19, 31, 128 - 61, 128 - 31, 128 - 19};
    Value* ek = schedule.encryption.key;
    for (std::uint32_t i = 0; i <= rounds; ++i) {
        rotateRight(ek[i], W[(i + 1) % 4], rotations[i / 4]);
        ek[i] ^= W[i % 4];
    }
    Value* dk = schedule.decryption.key;
    for (std::uint32_t i = 0; i <= rounds; ++i) {
        dk[i] = ek[rounds - i];
        if (i != 0 && i != rounds) diffuse(dk[i]);
    }
    schedule.transformWide = cpu::has(cpu::VAES) ? ariaTransformVaes : nullptr;
}

void encryptBlock(const ARIASchedule& key, const std::uint8_t* in, std::uint8_t* out)
{
    transformBlock(key.encryption, in, out);
}

void decryptBlock(const ARIASchedule& key, const std::uint8_t* in, std::uint8_t* out)
{
    transformBlock(key.decryption, in, out);
}

} // namespace

class cAlgARIA : public BlockCipher<16, ARIASchedule, encryptBlock, decryptBlock>
{
public:
    using BlockCipher::BlockCipher;
    Status decryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return decryptWith(schedule->transformWide, &schedule->decryption, in, out, length);
    }
};

class cAlgARIA128 final : public cAlgARIA
{
public:
    using cAlgARIA::cAlgARIA;
};

class cAlgARIA192 final : public cAlgARIA
{
public:
    using cAlgARIA::cAlgARIA;
};

cSymAlg* createARIA128(const std::uint8_t* key, std::uint32_t keyLength)
{
    return createOfThreeLengths<cAlgARIA128, expandKey>(key, keyLength);
}
cSymAlg* createARIA192(const std::uint8_t* key, std::uint32_t keyLength)
{
    return createOfThreeLengths<cAlgARIA192, expandKey>(key, keyLength);
}
cSymAlg* createARIA(const std::uint8_t* key, std::uint32_t keyLength)
{
    return createOfThreeLengths<cAlgARIA, expandKey>(key, keyLength);
}

} // namespace toolbelt
