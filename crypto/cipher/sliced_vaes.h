// Blocks of 16 bytes 32 at a time, a register for each byte of a block, with the S-box of Rijndael from the AES
// instructions: for ciphers whose S-boxes are that one between affine maps. Everything here belongs to the file that
// includes it.
#pragma once

#include <immintrin.h>

#include "crypto/base/dead_stack.h"
#include "crypto/cipher/gf256.h"
#include "crypto/cipher/wide.h"

namespace toolbelt {
namespace {

// An affine map, looked up by the halves of a byte.
struct AffineMap
{
    alignas(16) std::uint8_t low[16], high[16];
};
template <typename Function>
consteval AffineMap makeMap(Function function)
{
    AffineMap map = {};
    for (std::uint32_t i = 0; i < 16; ++i) {
        map.low[i] = function(i);
        map.high[i] = function(i << 4) ^ function(0);
    }
    return map;
}

[[gnu::always_inline]] inline __m256i apply(const AffineMap& map, __m256i x)
{
    const auto lookUp = [](const std::uint8_t(&table)[16], __m256i nibbles) {
        const __m128i half = _mm_load_si128(reinterpret_cast<const __m128i*>(table));
        const __m256i index = _mm256_and_si256(nibbles, _mm256_set1_epi8(0x0F));
        return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(half), index);
    };
    return lookUp(map.low, x) ^ lookUp(map.high, _mm256_srli_epi16(x, 4));
}

// Rijndael's S-box and its inverse. The AES instructions shift rows; the bytes are put where that brings them back.
[[gnu::always_inline]] inline __m256i applyBox(__m256i x)
{
    const __m128i places = _mm_set_epi8(3, 6, 9, 12, 15, 2, 5, 8, 11, 14, 1, 4, 7, 10, 13, 0);
    return _mm256_aesenclast_epi128(_mm256_shuffle_epi8(x, _mm256_broadcastsi128_si256(places)), __m256i{});
}
[[gnu::always_inline]] inline __m256i applyInverseBox(__m256i x)
{
    const __m128i places = _mm_set_epi8(11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15, 10, 5, 0);
    return _mm256_aesdeclast_epi128(_mm256_shuffle_epi8(x, _mm256_broadcastsi128_si256(places)), __m256i{});
}

// A byte of a big-endian word in all places.
[[gnu::always_inline]] inline __m256i byteOf(std::uint32_t word, int byte)
{
    return _mm256_set1_epi8(static_cast<char>(word >> (24 - 8 * byte)));
}

// Rows become columns, and columns rows, in each half of the registers: the bytes of registers 0 and 8, 1 and 9, ... in
// turn, four times.
[[gnu::always_inline]] inline void transpose(__m256i (&x)[16])
{
    for (int step = 0; step < 4; ++step) {
        __m256i from[16];
        for (int i = 0; i < 16; ++i) from[i] = x[i];
        for (int i = 0; i < 8; ++i) {
            x[2 * i] = _mm256_unpacklo_epi8(from[i], from[i + 8]);
            x[2 * i + 1] = _mm256_unpackhi_epi8(from[i], from[i + 8]);
        }
    }
}

template <typename Transform>
[[gnu::noinline]] std::uint32_t transformGroups(const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks,
                                                Transform transform)
{
    std::uint32_t done = 0;
    for (; blocks - done >= 32; done += 32, in += 512, out += 512) {
        __m256i x[16];
        for (int i = 0; i < 16; ++i) x[i] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in) + i);
        transpose(x);
        transform(x);
        transpose(x);
        for (int i = 0; i < 16; ++i) _mm256_storeu_si256(reinterpret_cast<__m256i*>(out) + i, x[i]);
    }
    return done;
}

// The whole of a WideBlocks routine: transform turns the 16 bytes of 32 blocks.
template <typename Transform>
std::uint32_t transformSliced(const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks, Transform transform)
{
    const std::uint32_t done = transformGroups(in, out, blocks, transform);
    if (done != 0) wipeDeadStack();
    return done;
}

} // namespace
} // namespace toolbelt
