// Rijndael on AES instructions: compiled with flags of its own, so it shares no inline function with other files.
#include "crypto/cipher/rijndael_aesni.h"

#include <wmmintrin.h>

namespace toolbelt {
namespace {

// Blocks side by side, to hide the latency of the instructions: 32-bit code has eight vector registers, and one holds
// the round key.
constexpr int WIDTH = 6;

__m128i load(const void* from)
{
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}
void store(void* to, __m128i value)
{
    _mm_storeu_si128(static_cast<__m128i*>(to), value);
}

struct Encryption
{
    static __m128i round(__m128i state, __m128i key) { return _mm_aesenc_si128(state, key); }
    static __m128i last(__m128i state, __m128i key) { return _mm_aesenclast_si128(state, key); }
};

struct Decryption
{
    static __m128i round(__m128i state, __m128i key) { return _mm_aesdec_si128(state, key); }
    static __m128i last(__m128i state, __m128i key) { return _mm_aesdeclast_si128(state, key); }
};

template <typename Direction, int COUNT>
void transformGroup(const std::uint32_t* keys, std::uint32_t rounds, const std::uint8_t* in, std::uint8_t* out)
{
    __m128i state[COUNT];
    __m128i key = load(keys);
#pragma GCC unroll 8
    for (int i = 0; i < COUNT; ++i) state[i] = _mm_xor_si128(load(in + 16 * i), key);
    for (; rounds > 1; --rounds) {
        keys += 4;
        key = load(keys);
#pragma GCC unroll 8
        for (int i = 0; i < COUNT; ++i) state[i] = Direction::round(state[i], key);
    }
    key = load(keys + 4);
#pragma GCC unroll 8
    for (int i = 0; i < COUNT; ++i) store(out + 16 * i, Direction::last(state[i], key));
}

template <typename Direction>
void transform(const std::uint32_t* keys, std::uint32_t rounds, const std::uint8_t* in, std::uint8_t* out,
               std::uint32_t blocks)
{
    for (; blocks >= WIDTH; blocks -= WIDTH, in += 16 * WIDTH, out += 16 * WIDTH)
        transformGroup<Direction, WIDTH>(keys, rounds, in, out);
    for (; blocks != 0; --blocks, in += 16, out += 16) transformGroup<Direction, 1>(keys, rounds, in, out);
}

} // namespace

void rijndaelEncryptAesni(const std::uint32_t* keys, std::uint32_t rounds, const std::uint8_t* in, std::uint8_t* out,
                          std::uint32_t blocks)
{
    transform<Encryption>(keys, rounds, in, out, blocks);
}

void rijndaelDecryptAesni(const std::uint32_t* keys, std::uint32_t rounds, const std::uint8_t* in, std::uint8_t* out,
                          std::uint32_t blocks)
{
    transform<Decryption>(keys, rounds, in, out, blocks);
}

} // namespace toolbelt
