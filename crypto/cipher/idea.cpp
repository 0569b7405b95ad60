// IDEA (Lai and Massey, 1991): 8-byte blocks, 16-byte keys, eight rounds and an output transformation on four 16-bit
// words, which are big-endian. Decryption is encryption under the inverse subkeys. No table is looked up and nothing
// branches on the data.
#include <immintrin.h>

#include "crypto/base/bytes.h"
#include "crypto/base/cpu.h"
#include "crypto/cipher/creators.h"
#include "crypto/cipher/idea_rounds.h"
#include "crypto/cipher/member.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t KEY_BYTES = 16;

struct IdeaSchedule
{
    std::uint16_t encryption[SUBKEYS];
    std::uint16_t decryption[SUBKEYS];
    WideBlocks* wide;
};

// The product modulo 65537 of the lower 16 bits, in the lower 16 bits, with anything above them; 0 stands for 65536. As
// 65536 is -1, high * 65536 + low is low - high.
std::uint32_t multiply(std::uint32_t a, std::uint32_t b)
{
#if defined(__i386__)
    // As 65537 is a prime, low - high is 0 only when a factor is 0, which counts as -1: the product is 1 - a - b then.
    // In what the compiler makes of the lines below, a block takes a quarter longer.
    std::uint32_t product = a, high;
    __asm__("mulw %w2\n\tsubw %w1, %w0\n\tcmovel %3, %0\n\tadcw $0, %w0" // a difference below 0 counts 65537 more
            : "+&a"(product), "=&d"(high)
            : "r"(b), "r"(1 - a - b)
            : "cc");
    return product;
#else
    // A factor less one is a plain 16-bit number for each of them, and a b = (a - 1) b + (b - 1) + 1.
    const std::uint32_t before = (b - 1) & 0xFFFF;
    const std::uint32_t less1 = ((a - 1) & 0xFFFF) * (before + 1) + before;
    unsigned difference, product;
    const auto borrow = _subborrow_u32(0, less1 & 0xFFFF, less1 >> 16, &difference);
    _addcarry_u32(borrow, difference, 1, &product);
    return product;
#endif
}

// x to the power of 65535, which is 1 / x for the prime 65537.
std::uint16_t inverse(std::uint16_t x)
{
    std::uint16_t power = 1;
    for (int bit = 0; bit < 16; ++bit) power = static_cast<std::uint16_t>(multiply(multiply(power, power), x));
    return power;
}

std::uint16_t negative(std::uint16_t x)
{
    return static_cast<std::uint16_t>(0u - x);
}

// Subkeys are consecutive 16-bit pieces of the key, which is rotated left by 25 bits after every eight.
void expandKey(IdeaSchedule& schedule, const std::uint8_t* key)
{
    std::uint16_t* Z = schedule.encryption;
    for (std::uint32_t i = 0; i < SUBKEYS; ++i) {
        if (i < 8) {
            Z[i] = load16be(key + 2 * i);
            continue;
        }
        // 25 bits are one piece and nine bits; the pieces of the eight before follow each other in a ring.
        const std::uint16_t* before = Z + (i / 8 - 1) * 8;
        Z[i] = static_cast<std::uint16_t>(before[(i + 1) % 8] << 9 | before[(i + 2) % 8] >> 7);
    }

    // Round by round from the end: inverse multipliers, negative addends, those of the middle rounds crossed over, as
    // the middle words change places there.
    std::uint16_t* D = schedule.decryption;
    for (std::uint32_t round = 0; round <= ROUNDS; ++round, D += 6) {
        const std::uint16_t* from = Z + 6 * (ROUNDS - round);
        const bool crossed = round != 0 && round != ROUNDS;
        D[0] = inverse(from[0]);
        D[1] = negative(from[crossed ? 2 : 1]);
        D[2] = negative(from[crossed ? 1 : 2]);
        D[3] = inverse(from[3]);
        if (round == ROUNDS) break;
        D[4] = from[-2];
        D[5] = from[-1];
    }
}

template <auto KEYS>
void transformBlock(const IdeaSchedule& schedule, const std::uint8_t* in, std::uint8_t* out)
{
    const std::uint32_t front = load32be(in), back = load32be(in + 4);
    std::uint32_t x[4] = {front >> 16, front, back >> 16, back};
    transformRounds(schedule.*KEYS, x, multiply);
    store32be(out, x[0] << 16 | (x[1] & 0xFFFF));
    store32be(out + 4, x[2] << 16 | (x[3] & 0xFFFF));
}

} // namespace

class cAlgIdea final : public BlockCipher<8, IdeaSchedule, transformBlock<&IdeaSchedule::encryption>,
                                          transformBlock<&IdeaSchedule::decryption>>
{
public:
    using BlockCipher::BlockCipher;
    Status encryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return transform<&IdeaSchedule::encryption>(in, out, length);
    }
    Status decryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return transform<&IdeaSchedule::decryption>(in, out, length);
    }

private:
    template <auto KEYS>
    Status transform(const std::uint8_t* in, std::uint8_t* out, std::int32_t length)
    {
        const IdeaSchedule& key = *schedule;
        return forEachBlock<8>(
            in, out, length, [&key](auto from, auto to) { transformBlock<KEYS>(key, from, to); }, key.wide, key.*KEYS);
    }
};

cSymAlg* createIdea(const std::uint8_t* key, std::uint32_t keyLength)
{
    const PaddedKey<KEY_BYTES> padded(key, keyLength);
    if (!padded) return nullptr;
    auto cipher = newCipher<cAlgIdea>(KEY_BYTES);
    if (cipher) {
        expandKey(*cipher->schedule, padded.data());
        cipher->schedule->wide = cpu::has(cpu::AVX512) ? ideaTransformAvx512
                                 : cpu::has(cpu::AVX2) ? ideaTransformAvx2
                                                       : nullptr;
    }
    return cipher.release();
}

} // namespace toolbelt
