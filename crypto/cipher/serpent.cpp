// Serpent (Anderson, Biham, Knudsen, 1998): 16-byte blocks, 32 rounds, always on the schedule of the 256-bit key. It
// works bitsliced: the four little-endian words of a block hold bit 0, 1, 2 and 3 of 32 nibbles, and an S-box is a
// circuit of logical operations on whole words.
#include <bit>

#include "crypto/base/bytes.h"
#include "crypto/base/cpu.h"
#include "crypto/cipher/creators.h"
#include "crypto/cipher/member.h"
#include "crypto/cipher/serpent_rounds.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t KEY_BYTES = 32;
constexpr std::uint32_t PHI = 0x9E3779B9;

struct SerpentSchedule
{
    SerpentKey K[ROUNDS + 1];
    WideBlocks* decryptWide;
};

using Block = std::uint32_t[4];

void expandKey(SerpentSchedule& schedule, const std::uint8_t* key)
{
    std::uint32_t w[8]; // the last eight prekeys, w[i] at i mod 8
    const WipeOnExit wipeW(w);
    for (std::uint32_t i = 0; i < 8; ++i) w[i] = load32le(key + 4 * i);
    for (std::uint32_t i = 0; i < 4 * (ROUNDS + 1); ++i) {
        w[i % 8] = std::rotl(w[i % 8] ^ w[(i + 3) % 8] ^ w[(i + 5) % 8] ^ w[(i + 7) % 8] ^ PHI ^ i, 11);
        schedule.K[i / 4][i % 4] = w[i % 8];
    }
    // Round key i passes through S3, S2, S1, S0, S7, S6, ... in turn.
    forEachBox(
        [&]<std::size_t N>() {
            for (std::uint32_t i = N; i <= ROUNDS; i += 8) substitute<S, (11 - N) % 8>(schedule.K[i]);
        },
        eightBoxes);
}

void loadBlock(Block& x, const std::uint8_t* in)
{
    for (std::uint32_t i = 0; i < 4; ++i) x[i] = load32le(in + 4 * i);
}

void storeBlock(std::uint8_t* out, const Block& x)
{
    for (std::uint32_t i = 0; i < 4; ++i) store32le(out + 4 * i, x[i]);
}

void encryptBlock(const SerpentSchedule& schedule, const std::uint8_t* in, std::uint8_t* out)
{
    Block x;
    loadBlock(x, in);
    for (std::uint32_t round = 0; round < ROUNDS; round += 8)
        forEachBox(
            [&]<std::size_t N>() {
                addKey(x, schedule.K[round + N]);
                substitute<S, N>(x);
                if (N != 7 || round + N != ROUNDS - 1) linearTransform(x); // the last round has a key in its place
            },
            eightBoxes);
    addKey(x, schedule.K[ROUNDS]);
    storeBlock(out, x);
}

void decryptBlock(const SerpentSchedule& schedule, const std::uint8_t* in, std::uint8_t* out)
{
    Block x[1];
    loadBlock(x[0], in);
    decryptRounds(schedule.K, x);
    storeBlock(out, x[0]);
}

} // namespace

class cAlgSerpent final : public BlockCipher<16, SerpentSchedule, encryptBlock, decryptBlock>
{
public:
    using BlockCipher::BlockCipher;
    Status decryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return decryptWith(schedule->decryptWide, schedule->K, in, out, length);
    }
};

// A short key is filled up with zeros to 32 bytes, without the standard's padding bit, and no length is kept to be
// reported, by design.
cSymAlg* createSerpent(const std::uint8_t* key, std::uint32_t keyLength)
{
    const PaddedKey<KEY_BYTES> padded(key, keyLength);
    if (!padded) return nullptr;
    auto cipher = newCipher<cAlgSerpent>(0u);
    if (cipher) {
        expandKey(*cipher->schedule, padded.data());
        cipher->schedule->decryptWide = cpu::has(cpu::AVX512) ? serpentDecryptAvx512
                                        : cpu::has(cpu::AVX2) ? serpentDecryptAvx2
                                                              : nullptr;
    }
    return cipher.release();
}

} // namespace toolbelt
