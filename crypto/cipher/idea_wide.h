// IDEA on registers of words: what its wide twins have in common. It belongs to the file that includes it, which brings
// along multiply, the product modulo 65537 of 16-bit words.
#pragma once

#include <immintrin.h>

#include "crypto/cipher/idea_rounds.h"
#include "crypto/cipher/wide_words.h"

namespace toolbelt {
namespace {

using HalfWords = std::uint16_t __attribute__((vector_size(WIDE_BYTES)));

// The bytes of each 16-bit word in the other order.
inline Words swapped(Words x)
{
    return Words(HalfWords(x) << 8 | HalfWords(x) >> 8);
}

// Even 16-bit words of a and of b, and odd ones; the same again takes it back.
inline void exchange(Words& a, Words& b)
{
    const Words even = (a & 0xFFFF) | b << 16;
    b = a >> 16 | (b & 0xFFFF0000);
    a = even;
}

// x: the front halves and the back halves of two registers full of blocks. Blocks are big-endian.
inline void exchangeHalves(Words (&x)[2][2])
{
    exchange(x[0][0], x[1][0]);
    exchange(x[0][1], x[1][1]);
}

template <HalfWords (*MULTIPLY)(HalfWords, std::uint16_t)>
std::uint32_t transformWideIdea(const void* keys, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks)
{
    const auto* const Z = static_cast<const std::uint16_t*>(keys);
    return transformWide<2, 2>(in, out, blocks, [Z](Words(&x)[2][2]) {
        exchangeHalves(x);
        HalfWords w[4] = {HalfWords(swapped(x[0][0])), HalfWords(swapped(x[1][0])), HalfWords(swapped(x[0][1])),
                          HalfWords(swapped(x[1][1]))};
        transformRounds(Z, w, MULTIPLY);
        x[0][0] = swapped(Words(w[0])), x[1][0] = swapped(Words(w[1]));
        x[0][1] = swapped(Words(w[2])), x[1][1] = swapped(Words(w[3]));
        exchangeHalves(x);
    });
}

} // namespace
} // namespace toolbelt
