// Rijndael over many blocks side by side, for the files of its tiers alone: each compiles it with flags of its own,
// which is why everything here belongs to the file that includes it.
#pragma once

#include <immintrin.h>

#include "crypto/cipher/chained_blocks.h"
#include "crypto/cipher/rijndael_tiers.h"

namespace toolbelt {
namespace {

constexpr int BLOCK = 16;
// Vectors side by side, to hide the latency of the instructions: 32-bit code has eight vector registers, and one holds
// the round key.
constexpr int WIDTH = 7;

// A register of one block.
struct OneBlock
{
    using Vector = __m128i;
    static Vector load(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }
    static void store(void* to, Vector value) { _mm_storeu_si128(static_cast<__m128i*>(to), value); }
    static Vector loadKey(const void* from) { return load(from); }
    static Vector xored(Vector a, Vector b) { return _mm_xor_si128(a, b); }
    static Vector encrypt(Vector state, Vector key) { return _mm_aesenc_si128(state, key); }
    static Vector encryptLast(Vector state, Vector key) { return _mm_aesenclast_si128(state, key); }
    static Vector decrypt(Vector state, Vector key) { return _mm_aesdec_si128(state, key); }
    static Vector decryptLast(Vector state, Vector key) { return _mm_aesdeclast_si128(state, key); }
};

enum class Direction
{
    ENCRYPT,
    DECRYPT,
};

// COUNT vectors; the block before them can be read when there is chaining. The last vector is stored first: what an
// earlier one is XORed with is then still there when out is in. (Inlined, or the compiler would leave the upper halves
// of the registers in use when it calls the form for one block: that slows down what runs after it.)
template <typename Register, Direction DIRECTION, Chain CHAIN, int COUNT>
[[gnu::always_inline]] inline void transformGroup(const std::uint32_t* keys, std::uint32_t rounds,
                                                  const std::uint8_t* in, std::uint8_t* out)
{
    using Vector = typename Register::Vector;
    constexpr int SIZE = sizeof(Vector);
    const auto transformRound = [](Vector state, Vector key) {
        return DIRECTION == Direction::ENCRYPT ? Register::encrypt(state, key) : Register::decrypt(state, key);
    };
    const std::uint8_t* const from = CHAIN == Chain::CFB ? in - BLOCK : in;
    Vector state[COUNT];
    Vector key = Register::loadKey(keys);
#pragma GCC unroll 8
    for (int i = 0; i < COUNT; ++i) state[i] = Register::xored(Register::load(from + SIZE * i), key);
    for (; rounds > 1; --rounds) {
        keys += 4;
        key = Register::loadKey(keys);
#pragma GCC unroll 8
        for (int i = 0; i < COUNT; ++i) {
            state[i] = transformRound(state[i], key);
            __asm__("" : "+x"(state[i])); // in a register, or the array would be stored in every round
        }
    }
    key = Register::loadKey(keys + 4);
#pragma GCC unroll 8
    for (int i = COUNT - 1; i >= 0; --i) {
        Vector result = DIRECTION == Direction::ENCRYPT ? Register::encryptLast(state[i], key)
                                                        : Register::decryptLast(state[i], key);
        if (CHAIN == Chain::CBC) result = Register::xored(result, Register::load(in + SIZE * i - BLOCK));
        if (CHAIN == Chain::CFB) result = Register::xored(result, Register::load(in + SIZE * i));
        Register::store(out + SIZE * i, result);
    }
}

// All blocks but the first `first`, from the last one down, for the same reason. Returns how many are left.
template <typename Register, Direction DIRECTION, Chain CHAIN, int COUNT>
std::uint32_t transformDown(const std::uint32_t* keys, std::uint32_t rounds, const std::uint8_t* in, std::uint8_t* out,
                            std::uint32_t blocks, std::uint32_t first)
{
    constexpr std::uint32_t BLOCKS = sizeof(typename Register::Vector) / BLOCK * COUNT;
    while (blocks - first >= BLOCKS) {
        blocks -= BLOCKS;
        transformGroup<Register, DIRECTION, CHAIN, COUNT>(keys, rounds, in + BLOCK * blocks, out + BLOCK * blocks);
    }
    return blocks;
}

// Wide is the register to use where there are blocks enough.
template <typename Wide, Direction DIRECTION, Chain CHAIN>
void transformRun(const std::uint32_t* keys, std::uint32_t rounds, const std::uint8_t* in, std::uint8_t* out,
                  std::uint32_t blocks, std::uint32_t first)
{
    blocks = transformDown<Wide, DIRECTION, CHAIN, WIDTH>(keys, rounds, in, out, blocks, first);
    blocks = transformDown<Wide, DIRECTION, CHAIN, 1>(keys, rounds, in, out, blocks, first);
    transformDown<OneBlock, DIRECTION, CHAIN, 1>(keys, rounds, in, out, blocks, first);
}

template <typename Wide, Direction DIRECTION>
void transformBlocks(const std::uint32_t* keys, std::uint32_t rounds, const std::uint8_t* in, std::uint8_t* out,
                     std::uint32_t blocks)
{
    transformRun<Wide, DIRECTION, Chain::NONE>(keys, rounds, in, out, blocks, 0);
}

// The decryption of CBC and of CFB. The first block is done last, with the chain that was given.
template <typename Wide, Direction DIRECTION, Chain CHAIN>
void decryptChained(const std::uint32_t* keys, std::uint32_t rounds, std::uint8_t* chain, const std::uint8_t* in,
                    std::uint8_t* out, std::uint32_t blocks)
{
    if (blocks == 0) return;
    std::uint8_t edge[2 * BLOCK]; // the chain and the first block, side by side
    OneBlock::store(edge, OneBlock::load(chain));
    OneBlock::store(edge + BLOCK, OneBlock::load(in));
    OneBlock::store(chain, OneBlock::load(in + BLOCK * (blocks - 1)));
    transformRun<Wide, DIRECTION, CHAIN>(keys, rounds, in, out, blocks, 1);
    transformGroup<OneBlock, DIRECTION, CHAIN, 1>(keys, rounds, edge + BLOCK, out);
}

} // namespace
} // namespace toolbelt
