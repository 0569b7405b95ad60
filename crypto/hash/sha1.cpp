// SHA-1: 80 steps on five words, big-endian throughout.
#include "crypto/hash/sha1.h"

#include <bit>

#include "crypto/base/bytes.h"
#include "crypto/base/cpu.h"
#include "crypto/hash/unroll.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t CONSTANTS[4] = {0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC, 0xCA62C1D6};

template <std::uint32_t ROUND>
constexpr std::uint32_t mixWords(std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    if constexpr (ROUND == 0) return d ^ (b & (c ^ d));       // choice
    if constexpr (ROUND == 2) return (b & c) | (d & (b | c)); // majority
    return b ^ c ^ d;
}

} // namespace

void sha1Compress(Sha1State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    for (; count != 0; --count, blocks += 64) {
        std::uint32_t w[16]; // the last 16 words of the schedule, in a ring
        Sha1State v = state;
        // Step I finds a, b, c, d, e from index -I on: the words stay, their roles move.
        unroll<80>([&]<std::uint32_t I>() __attribute__((always_inline)) {
            if constexpr (I < 16)
                w[I] = load32be(blocks + 4 * I);
            else
                w[I % 16] = std::rotl(w[(I + 13) % 16] ^ w[(I + 8) % 16] ^ w[(I + 2) % 16] ^ w[I % 16], 1);
            std::uint32_t& b = v[(81 - I) % 5];
            v[(84 - I) % 5] += std::rotl(v[(80 - I) % 5], 5) + mixWords<I / 20>(b, v[(82 - I) % 5], v[(83 - I) % 5]) +
                               CONSTANTS[I / 20] + w[I % 16];
            b = std::rotl(b, 30);
        });
        for (std::uint32_t i = 0; i < 5; ++i) state[i] += v[i];
    }
}

void sha1Choose(Sha1Context* context)
{
    context->compress = cpu::has(cpu::SHA | cpu::SSSE3) ? sha1CompressShani : sha1Compress;
}

Status sha1Reset(Sha1Context* context)
{
    start(*context, {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0});
    return CRYPT_OK;
}

Status sha1Update(Sha1Context* context, const std::uint8_t* data, std::uint32_t length)
{
    countAndAbsorb(*context, data, length, context->compress);
    return CRYPT_OK;
}

Status sha1Final(Sha1Context* context, std::uint8_t* output)
{
    std::uint8_t length[8];
    store64be(length, context->counter * 8);
    pad(*context, length, context->compress);
    for (std::uint32_t i = 0; i < 5; ++i) store32be(output + 4 * i, context->state[i]);
    return CRYPT_OK;
}

} // namespace toolbelt
