// Registers of eight words of 32 bits, one of each of eight blocks, for the files that are compiled for AVX2 alone:
// everything here belongs to the file that includes it. A register has the operators of a word.
#pragma once

#include <immintrin.h>

#include "crypto/cipher/wide.h"

namespace toolbelt {
namespace {

using Words = std::uint32_t __attribute__((vector_size(32)));
constexpr std::uint32_t WIDE_BLOCKS = 8;

inline __m256i loadWide(const std::uint8_t* from)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}
inline void storeWide(std::uint8_t* to, __m256i value)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), value);
}

// In each half of the registers, four words of four registers: rows become columns.
inline void transpose(__m256i (&x)[4])
{
    const __m256i a = _mm256_unpacklo_epi32(x[0], x[1]), b = _mm256_unpackhi_epi32(x[0], x[1]);
    const __m256i c = _mm256_unpacklo_epi32(x[2], x[3]), d = _mm256_unpackhi_epi32(x[2], x[3]);
    x[0] = _mm256_unpacklo_epi64(a, c);
    x[1] = _mm256_unpackhi_epi64(a, c);
    x[2] = _mm256_unpacklo_epi64(b, d);
    x[3] = _mm256_unpackhi_epi64(b, d);
}

// Eight blocks of four words at a time. The order of the blocks within a register does not matter: it comes back when
// they are stored.
template <typename Transform>
std::uint32_t transformWide16(const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks, Transform transform)
{
    const std::uint32_t done = blocks / WIDE_BLOCKS * WIDE_BLOCKS;
    for (std::uint32_t i = 0; i < done; i += WIDE_BLOCKS, in += 128, out += 128) {
        __m256i x[4] = {loadWide(in), loadWide(in + 32), loadWide(in + 64), loadWide(in + 96)};
        transpose(x);
        Words w[4] = {Words(x[0]), Words(x[1]), Words(x[2]), Words(x[3])};
        transform(w);
        for (int j = 0; j < 4; ++j) x[j] = __m256i(w[j]);
        transpose(x);
        for (int j = 0; j < 4; ++j) storeWide(out + 32 * j, x[j]);
    }
    return done;
}

} // namespace
} // namespace toolbelt
