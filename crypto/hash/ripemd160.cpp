// RIPEMD-160: two lines of 80 steps over the same block, combined at the end; little-endian throughout.
#include "crypto/hash/ripemd160.h"

#include <bit>

#include "crypto/base/bytes.h"
#include "crypto/hash/unroll.h"

namespace toolbelt {
namespace {

enum Line
{
    LEFT,
    RIGHT,
};

constexpr std::uint32_t CONSTANTS[2][5] = {{0x00000000, 0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC, 0xA953FD4E},
                                           {0x50A28BE6, 0x5C4DD124, 0x6D703EF3, 0x7A6D76E9, 0x00000000}};

// Rotation of message word i in each round, the same in both lines.
constexpr std::uint8_t SHIFTS[5][16] = {{11, 14, 15, 12, 5, 8, 7, 9, 11, 13, 14, 15, 6, 7, 9, 8},
                                        {12, 13, 11, 15, 6, 9, 9, 7, 12, 15, 11, 13, 7, 8, 7, 7},
                                        {13, 15, 14, 11, 7, 7, 6, 8, 13, 14, 13, 12, 5, 5, 6, 9},
                                        {14, 11, 12, 14, 8, 6, 5, 5, 15, 12, 15, 14, 9, 9, 8, 6},
                                        {15, 12, 13, 13, 9, 5, 8, 6, 14, 11, 12, 11, 8, 6, 5, 5}};

// Message word of a step: the left line begins in order, the right one with 9i + 5; each round permutes the one before.
constexpr std::uint32_t messageWord(Line line, std::uint32_t step)
{
    constexpr std::uint32_t PERMUTATION[16] = {7, 4, 13, 1, 10, 6, 15, 3, 12, 0, 9, 5, 2, 14, 11, 8};
    std::uint32_t word = line == LEFT ? step % 16 : (9 * step + 5) % 16;
    for (std::uint32_t round = 0; round < step / 16; ++round) word = PERMUTATION[word];
    return word;
}

template <std::uint32_t FUNCTION>
constexpr std::uint32_t mixWords(std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    if constexpr (FUNCTION == 0) return b ^ (c ^ d);
    if constexpr (FUNCTION == 1) return d ^ (b & (c ^ d));
    if constexpr (FUNCTION == 2) return (b | ~c) ^ d;
    if constexpr (FUNCTION == 3) return (c & ~d) + (b & d);
    if constexpr (FUNCTION == 4) return b ^ (c | ~d);
}

template <Line LINE>
Sha1State runLine(Sha1State v, const std::uint8_t* block)
{
    // Step I finds a, b, c, d, e from index -I on: the words stay, their roles move.
    unroll<80>([&]<std::uint32_t I>() __attribute__((always_inline)) {
        constexpr std::uint32_t ROUND = I / 16;
        constexpr std::uint32_t FUNCTION = LINE == LEFT ? ROUND : 4 - ROUND;
        constexpr std::uint32_t WORD = messageWord(LINE, I);
        std::uint32_t& a = v[(80 - I) % 5];
        std::uint32_t& c = v[(82 - I) % 5];
        a += mixWords<FUNCTION>(v[(81 - I) % 5], c, v[(83 - I) % 5]) + load32le(block + 4 * WORD) +
             CONSTANTS[LINE][ROUND];
        a = std::rotl(a, SHIFTS[ROUND][WORD]) + v[(84 - I) % 5];
        c = std::rotl(c, 10);
    });
    return v;
}

} // namespace

void ripemd160Compress(Sha1State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    for (; count != 0; --count, blocks += 64) {
        const Sha1State left = runLine<LEFT>(state, blocks);
        const Sha1State right = runLine<RIGHT>(state, blocks);
        const Sha1State before = state;
        for (std::uint32_t i = 0; i < 5; ++i) state[i] = before[(i + 1) % 5] + left[(i + 2) % 5] + right[(i + 3) % 5];
    }
}

Status ripemd160Update(Sha1Context* context, const std::uint8_t* data, std::uint32_t length)
{
    countAndAbsorb(*context, data, length, ripemd160Compress);
    return CRYPT_OK;
}

Status ripemd160Final(Sha1Context* context, std::uint8_t* output)
{
    std::uint8_t length[8];
    store64le(length, context->counter * 8);
    pad(*context, length, ripemd160Compress);
    for (std::uint32_t i = 0; i < 5; ++i) store32le(output + 4 * i, context->state[i]);
    return CRYPT_OK;
}

} // namespace toolbelt
