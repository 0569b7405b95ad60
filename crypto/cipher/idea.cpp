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

// The product modulo 65537 of the lower 16 bits, in the lower 16 bits, with anything above them; 0 stands for 65536. A
// factor less one is a plain 16-bit number for each of them, and a b = (a - 1) b + (b - 1) + 1. As 65536 is -1, high *
// 65536 + low is low - high.
std::uint32_t multiply(std::uint32_t a, std::uint32_t b)
{
    const std::uint32_t before = (b - 1) & 0xFFFF;
    const std::uint32_t less1 = ((a - 1) & 0xFFFF) * (before + 1) + before;
    unsigned difference, product;
    const auto borrow = _subborrow_u32(0, less1 & 0xFFFF, less1 >> 16, &difference);
    _addcarry_u32(borrow, difference, 1, &product); // a difference below 0 counts 65537 more
    return product;
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

void transformBlock(const std::uint16_t (&subkeys)[SUBKEYS], const std::uint8_t* in, std::uint8_t* out)
{
    std::uint32_t x[4];
    for (std::uint32_t i = 0; i < 4; ++i) x[i] = load16be(in + 2 * i);
    transformRounds(subkeys, x, multiply);
    for (std::uint32_t i = 0; i < 4; ++i) store16be(out + 2 * i, static_cast<std::uint16_t>(x[i]));
}

} // namespace

class cAlgIdea final : public cSymAlg
{
public:
    std::uint32_t getSizes(std::uint32_t* blockSize, std::uint32_t* keySize) const override
    {
        *blockSize = 8;
        *keySize = KEY_BYTES;
        return 1;
    }
    Status encryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return forEachBlock<8>(
            in, out, length, [&key = *schedule](auto from, auto to) { transformBlock(key.encryption, from, to); },
            schedule->wide, schedule->encryption);
    }
    Status decryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return forEachBlock<8>(
            in, out, length, [&key = *schedule](auto from, auto to) { transformBlock(key.decryption, from, to); },
            schedule->wide, schedule->decryption);
    }

    ScheduleOwner<IdeaSchedule> schedule;
};

cSymAlg* createIdea(const std::uint8_t* key, std::uint32_t keyLength)
{
    const PaddedKey<KEY_BYTES> padded(key, keyLength);
    if (!padded) return nullptr;
    auto cipher = newCipher<cAlgIdea>();
    if (cipher) {
        expandKey(*cipher->schedule, padded.data());
        cipher->schedule->wide = cpu::has(cpu::AVX512) ? ideaTransformAvx512
                                 : cpu::has(cpu::AVX2) ? ideaTransformAvx2
                                                       : nullptr;
    }
    return cipher.release();
}

} // namespace toolbelt
