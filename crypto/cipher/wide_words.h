// Registers of words of 32 bits, one of each of as many blocks as the flags of the including file give room for: eight
// with AVX2, sixteen with AVX-512. Everything here belongs to the file that includes it. A register has the operators
// of a word.
#pragma once

#include <cstdint>
#include <utility>

#include "crypto/base/dead_stack.h"
#include "crypto/cipher/wide.h"

namespace toolbelt {
namespace {

#ifdef __AVX512F__
constexpr int WIDE_BYTES = 64;
#else
constexpr int WIDE_BYTES = 32;
#endif
constexpr int WIDE_BLOCKS = WIDE_BYTES / 4;
using Words = std::uint32_t __attribute__((vector_size(WIDE_BYTES)));

// Words at any address, seen as bytes of any type.
struct [[gnu::packed, gnu::may_alias]] WordsInMemory
{
    Words words;
};

// In each 16 bytes of the registers: the words of the front half (HALF 0) or of the back half (HALF 1) of a and b in
// turn.
template <int HALF, int... I>
inline Words interleaved(Words a, Words b, std::integer_sequence<int, I...>)
{
    return __builtin_shufflevector(a, b, (I / 4 * 4 + 2 * HALF + I % 4 / 2 + I % 2 * WIDE_BLOCKS)...);
}
template <int HALF>
inline Words interleaved(Words a, Words b)
{
    return interleaved<HALF>(a, b, std::make_integer_sequence<int, WIDE_BLOCKS>());
}

// Four words of four registers: rows become columns, and columns rows.
inline void transpose(Words (&x)[4])
{
    const Words a = interleaved<0>(x[0], x[2]), b = interleaved<0>(x[1], x[3]);
    const Words c = interleaved<1>(x[0], x[2]), d = interleaved<1>(x[1], x[3]);
    x[0] = interleaved<0>(a, b), x[1] = interleaved<1>(a, b);
    x[2] = interleaved<0>(c, d), x[3] = interleaved<1>(c, d);
}

// Loads blocks of two or four words into a register for each of these words, and stores them. The order of the blocks
// within a register does not matter: it comes back when they are stored. (No loops here: an array that is indexed by a
// counter lies in memory.)
inline void loadBlocks(Words (&x)[2], const WordsInMemory* from)
{
    const Words a = interleaved<0>(from[0].words, from[1].words), b = interleaved<1>(from[0].words, from[1].words);
    x[0] = interleaved<0>(a, b), x[1] = interleaved<1>(a, b);
}
inline void loadBlocks(Words (&x)[4], const WordsInMemory* from)
{
    x[0] = from[0].words, x[1] = from[1].words, x[2] = from[2].words, x[3] = from[3].words;
    transpose(x);
}
inline void storeBlocks(WordsInMemory* to, Words (&x)[2])
{
    to[0].words = interleaved<0>(x[0], x[1]), to[1].words = interleaved<1>(x[0], x[1]);
}
inline void storeBlocks(WordsInMemory* to, Words (&x)[4])
{
    transpose(x);
    to[0].words = x[0], to[1].words = x[1], to[2].words = x[2], to[3].words = x[3];
}

// GROUPS registers full of blocks of COUNT words at a time.
template <int GROUPS, int COUNT, typename Transform>
[[gnu::noinline]] std::uint32_t transformGroups(const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks,
                                                Transform transform)
{
    constexpr std::uint32_t BLOCKS = GROUPS * WIDE_BLOCKS;
    const std::uint32_t done = blocks / BLOCKS * BLOCKS;
    const auto* from = reinterpret_cast<const WordsInMemory*>(in);
    auto* to = reinterpret_cast<WordsInMemory*>(out);
    for (std::uint32_t left = done; left != 0; left -= BLOCKS, from += GROUPS * COUNT, to += GROUPS * COUNT) {
        Words x[GROUPS][COUNT];
        loadBlocks(x[0], from);
        if constexpr (GROUPS == 2) loadBlocks(x[1], from + COUNT);
        transform(x);
        storeBlocks(to, x[0]);
        if constexpr (GROUPS == 2) storeBlocks(to + COUNT, x[1]);
    }
    return done;
}

// The whole of a WideBlocks routine: transform turns Words[GROUPS][COUNT].
template <int GROUPS, int COUNT, typename Transform>
std::uint32_t transformWide(const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks, Transform transform)
{
    const std::uint32_t done = transformGroups<GROUPS, COUNT>(in, out, blocks, transform);
    if (done != 0) wipeDeadStack();
    return done;
}

// For rounds that wait longer than one group keeps the processor busy: two groups at a time, and one if one is left.
// transform turns Words[2][COUNT] as well as Words[1][COUNT].
template <int COUNT, typename Transform>
std::uint32_t transformPairs(const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks, Transform transform)
{
    const std::uint32_t done = transformWide<2, COUNT>(in, out, blocks, transform);
    const std::uint32_t bytes = done * COUNT * sizeof(std::uint32_t);
    return done + transformWide<1, COUNT>(in + bytes, out + bytes, blocks - done, transform);
}

} // namespace
} // namespace toolbelt
