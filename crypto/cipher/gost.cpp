// GOST 28147-89: 8-byte blocks, 32-byte keys, 32 rounds. A block and the key are read as little-endian words. The
// standard leaves the eight substitution boxes to the user; the engine has this one fixed set.
#include <array>
#include <bit>

#include "crypto/base/bytes.h"
#include "crypto/base/cpu.h"
#include "crypto/cipher/creators.h"
#include "crypto/cipher/gost_rounds.h"
#include "crypto/cipher/member.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t KEY_BYTES = 32;

// The boxes two by two, one table for each byte of the sum, with the rotation by 11 bits that follows done already.
using ByteTable = std::array<std::uint32_t, 256>;
constexpr std::array<ByteTable, 4> substitution = [] {
    std::array<ByteTable, 4> tables = {};
    for (std::uint32_t byte = 0; byte < 4; ++byte)
        for (std::uint32_t x = 0; x < 256; ++x) {
            const std::uint32_t y = std::uint32_t(K[2 * byte + 1][x >> 4]) << 4 | K[2 * byte][x & 15];
            tables[byte][x] = std::rotl(y << 8 * byte, 11);
        }
    return tables;
}();

struct GOSTSchedule
{
    std::uint32_t key[8];
    WideBlocks* decryptWide;
};

std::uint32_t f(std::uint32_t sum)
{
    return substitution[0][sum & 255] ^ substitution[1][sum >> 8 & 255] ^ substitution[2][sum >> 16 & 255] ^
           substitution[3][sum >> 24];
}

template <std::uint32_t UPWARDS>
void transformBlock(const GOSTSchedule& schedule, const std::uint8_t* in, std::uint8_t* out)
{
    std::uint32_t x[1][2] = {{load32le(in), load32le(in + 4)}};
    transformRounds<UPWARDS>(schedule.key, x, f);
    store32le(out, x[0][0]);
    store32le(out + 4, x[0][1]);
}

} // namespace

class cAlgGOST final : public BlockCipher<8, GOSTSchedule, transformBlock<3>, transformBlock<1>>
{
public:
    using BlockCipher::BlockCipher;
    Status decryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return decryptWith(schedule->decryptWide, schedule->key, in, out, length);
    }
};

// No length is kept to be reported, by design.
cSymAlg* createGOST(const std::uint8_t* key, std::uint32_t keyLength)
{
    const PaddedKey<KEY_BYTES> padded(key, keyLength);
    if (!padded) return nullptr;
    auto cipher = newCipher<cAlgGOST>(0u);
    if (cipher) {
        for (std::uint32_t i = 0; i < 8; ++i) cipher->schedule->key[i] = load32le(padded.data() + 4 * i);
        cipher->schedule->decryptWide = cpu::has(cpu::AVX512 | cpu::VBMI) ? gostDecryptAvx512
                                        : cpu::has(cpu::AVX2)             ? gostDecryptAvx2
                                                                          : nullptr;
    }
    return cipher.release();
}

} // namespace toolbelt
