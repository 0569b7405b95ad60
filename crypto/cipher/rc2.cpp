// RC2 (RFC 2268): 8-byte blocks, little-endian 16-bit words, keys of 1 to 128 bytes. The effective key length is that
// of the key: 8 bits a byte.
#include <bit>

#include "crypto/base/bytes.h"
#include "crypto/cipher/creators.h"
#include "crypto/cipher/member.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t LARGEST_KEY = 128;
constexpr std::uint32_t ROUNDS = 16; // of mixing
constexpr std::uint32_t KEY_WORDS = 4 * ROUNDS;

// Digits of pi, as the RFC has them.
constexpr std::uint8_t PITABLE[256] = {
    0xD9, 0x78, 0xF9, 0xC4, 0x19, 0xDD, 0xB5, 0xED, 0x28, 0xE9, 0xFD, 0x79, 0x4A, 0xA0, 0xD8, 0x9D, 0xC6, 0x7E, 0x37,
    0x83, 0x2B, 0x76, 0x53, 0x8E, 0x62, 0x4C, 0x64, 0x88, 0x44, 0x8B, 0xFB, 0xA2, 0x17, 0x9A, 0x59, 0xF5, 0x87, 0xB3,
    0x4F, 0x13, 0x61, 0x45, 0x6D, 0x8D, 0x09, 0x81, 0x7D, 0x32, 0xBD, 0x8F, 0x40, 0xEB, 0x86, 0xB7, 0x7B, 0x0B, 0xF0,
    0x95, 0x21, 0x22, 0x5C, 0x6B, 0x4E, 0x82, 0x54, 0xD6, 0x65, 0x93, 0xCE, 0x60, 0xB2, 0x1C, 0x73, 0x56, 0xC0, 0x14,
    0xA7, 0x8C, 0xF1, 0xDC, 0x12, 0x75, 0xCA, 0x1F, 0x3B, 0xBE, 0xE4, 0xD1, 0x42, 0x3D, 0xD4, 0x30, 0xA3, 0x3C, 0xB6,
    0x26, 0x6F, 0xBF, 0x0E, 0xDA, 0x46, 0x69, 0x07, 0x57, 0x27, 0xF2, 0x1D, 0x9B, 0xBC, 0x94, 0x43, 0x03, 0xF8, 0x11,
    0xC7, 0xF6, 0x90, 0xEF, 0x3E, 0xE7, 0x06, 0xC3, 0xD5, 0x2F, 0xC8, 0x66, 0x1E, 0xD7, 0x08, 0xE8, 0xEA, 0xDE, 0x80,
    0x52, 0xEE, 0xF7, 0x84, 0xAA, 0x72, 0xAC, 0x35, 0x4D, 0x6A, 0x2A, 0x96, 0x1A, 0xD2, 0x71, 0x5A, 0x15, 0x49, 0x74,
    0x4B, 0x9F, 0xD0, 0x5E, 0x04, 0x18, 0xA4, 0xEC, 0xC2, 0xE0, 0x41, 0x6E, 0x0F, 0x51, 0xCB, 0xCC, 0x24, 0x91, 0xAF,
    0x50, 0xA1, 0xF4, 0x70, 0x39, 0x99, 0x7C, 0x3A, 0x85, 0x23, 0xB8, 0xB4, 0x7A, 0xFC, 0x02, 0x36, 0x5B, 0x25, 0x55,
    0x97, 0x31, 0x2D, 0x5D, 0xFA, 0x98, 0xE3, 0x8A, 0x92, 0xAE, 0x05, 0xDF, 0x29, 0x10, 0x67, 0x6C, 0xBA, 0xC9, 0xD3,
    0x00, 0xE6, 0xCF, 0xE1, 0x9E, 0xA8, 0x2C, 0x63, 0x16, 0x01, 0x3F, 0x58, 0xE2, 0x89, 0xA9, 0x0D, 0x38, 0x34, 0x1B,
    0xAB, 0x33, 0xFF, 0xB0, 0xBB, 0x48, 0x0C, 0x5F, 0xB9, 0xB1, 0xCD, 0x2E, 0xC5, 0xF3, 0xDB, 0x47, 0xE5, 0xA5, 0x9C,
    0x77, 0x0A, 0xA6, 0x20, 0x68, 0xFE, 0x7F, 0xC1, 0xAD};

struct RC2Schedule
{
    std::uint16_t K[KEY_WORDS];
};

// The RFC's mask of the effective bits is all ones for whole bytes, so it does not appear.
void expandKey(RC2Schedule& schedule, const std::uint8_t* key, std::uint32_t T)
{
    std::uint8_t L[LARGEST_KEY];
    const WipeOnExit wipeL(L);
    std::memcpy(L, key, T);
    for (std::uint32_t i = T; i < LARGEST_KEY; ++i) L[i] = PITABLE[(L[i - 1] + L[i - T]) & 255];
    L[LARGEST_KEY - T] = PITABLE[L[LARGEST_KEY - T]];
    for (std::uint32_t i = LARGEST_KEY - T; i-- > 0;) L[i] = PITABLE[L[i + 1] ^ L[i + T]];
    std::memcpy(schedule.K, L, LARGEST_KEY); // little-endian
}

// The four words of a block, 16 bits each, in the names of a step: x changes under its key word, by the word one before
// it in the ring, the one two before and the one three before.
using Word = std::uint16_t;

// Each bit of before1 picks the bit of before2 (1) or of before3 (0). Either direction picks in the way that is short
// for the word that was changed last: before1 when encrypting, before3 when decrypting.
Word mix(Word x, Word key, Word before1, Word before2, Word before3, int shift)
{
    return std::rotl(static_cast<Word>(x + key + (((before2 ^ before3) & before1) ^ before3)), shift);
}
Word unmix(Word x, Word key, Word before1, Word before2, Word before3, int shift)
{
    return static_cast<Word>(std::rotr(x, shift) - key - (before1 & before2) - (~before1 & before3));
}

// Five rounds of mixing, one of mashing, six, one, five.
bool mashesAfter(std::uint32_t mixingRound)
{
    return mixingRound == 4 || mixingRound == 10;
}

void encryptBlock(const RC2Schedule& schedule, const std::uint8_t* in, std::uint8_t* out)
{
    const std::uint16_t* K = schedule.K;
    const std::uint32_t low = load32le(in), high = load32le(in + 4);
    Word R0 = low & 0xFFFF, R1 = low >> 16, R2 = high & 0xFFFF, R3 = high >> 16;
    for (std::uint32_t round = 0; round < ROUNDS; ++round) {
        const std::uint16_t* k = K + 4 * round;
        R0 = mix(R0, k[0], R3, R2, R1, 1);
        R1 = mix(R1, k[1], R0, R3, R2, 2);
        R2 = mix(R2, k[2], R1, R0, R3, 3);
        R3 = mix(R3, k[3], R2, R1, R0, 5);
        if (mashesAfter(round)) {
            R0 += K[R3 & 63];
            R1 += K[R0 & 63];
            R2 += K[R1 & 63];
            R3 += K[R2 & 63];
        }
    }
    store32le(out, std::uint32_t{R1} << 16 | R0);
    store32le(out + 4, std::uint32_t{R3} << 16 | R2);
}

void decryptBlock(const RC2Schedule& schedule, const std::uint8_t* in, std::uint8_t* out)
{
    const std::uint16_t* K = schedule.K;
    const std::uint32_t low = load32le(in), high = load32le(in + 4);
    Word R0 = low & 0xFFFF, R1 = low >> 16, R2 = high & 0xFFFF, R3 = high >> 16;
    for (std::uint32_t round = ROUNDS; round-- > 0;) {
        if (mashesAfter(round)) {
            R3 -= K[R2 & 63];
            R2 -= K[R1 & 63];
            R1 -= K[R0 & 63];
            R0 -= K[R3 & 63];
        }
        const std::uint16_t* k = K + 4 * round;
        R3 = unmix(R3, k[3], R2, R1, R0, 5);
        R2 = unmix(R2, k[2], R1, R0, R3, 3);
        R1 = unmix(R1, k[1], R0, R3, R2, 2);
        R0 = unmix(R0, k[0], R3, R2, R1, 1);
    }
    store32le(out, std::uint32_t{R1} << 16 | R0);
    store32le(out + 4, std::uint32_t{R3} << 16 | R2);
}

} // namespace

class cAlgRC2 : public BlockCipher<8, RC2Schedule, encryptBlock, decryptBlock>
{
public:
    using BlockCipher::BlockCipher;
};

class cAlgRC2_40 final : public cAlgRC2
{
public:
    using cAlgRC2::cAlgRC2;
};

class cAlgRC2_128 final : public cAlgRC2
{
public:
    using cAlgRC2::cAlgRC2;
};

namespace {

template <typename Cipher>
cSymAlg* create(const std::uint8_t* key, std::uint32_t keyLength, std::uint32_t nominalLength)
{
    if (key == nullptr || keyLength == 0 || keyLength > LARGEST_KEY) return nullptr;
    auto cipher = newCipher<Cipher>(nominalLength);
    if (cipher) expandKey(*cipher->schedule, key, keyLength);
    return cipher.release();
}

} // namespace

// The two differ in their class and in the key size they report; each takes any key that RC2 takes.
cSymAlg* createRC2_40(const std::uint8_t* key, std::uint32_t keyLength)
{
    return create<cAlgRC2_40>(key, keyLength, 5);
}

cSymAlg* createRC2_128(const std::uint8_t* key, std::uint32_t keyLength)
{
    return create<cAlgRC2_128>(key, keyLength, 16);
}

} // namespace toolbelt
