// Vectors of four 64-bit lanes. For files that are compiled for AVX2. The same operations as Sse2 has, each in its own
// instructions: the kernels are written once over either.
#pragma once

#include <immintrin.h>

#include <cstdint>

namespace toolbelt {
namespace {

constexpr std::uint64_t laneMasks[8] = {
    0, 0, 0, 0, ~std::uint64_t{0}, ~std::uint64_t{0}, ~std::uint64_t{0}, ~std::uint64_t{0}};

struct Avx2
{
    using Type = __m256i;
    static constexpr int LANES = 4;

    static Type zero() noexcept { return _mm256_setzero_si256(); }
    static Type load(const void* x) noexcept { return _mm256_load_si256(static_cast<const Type*>(x)); }
    static Type loadAny(const void* x) noexcept { return _mm256_loadu_si256(static_cast<const Type*>(x)); }
    static Type broadcast(const std::uint64_t* x) noexcept
    {
        return _mm256_castpd_si256(_mm256_broadcast_sd(reinterpret_cast<const double*>(x))); // a load, nothing more
    }
    // In the lower half of every lane; the upper half is undefined.
    static Type broadcastWord(std::uint32_t x) noexcept { return _mm256_set1_epi32(static_cast<int>(x)); }
    static void store(void* x, Type value) noexcept { _mm256_store_si256(static_cast<Type*>(x), value); }
    static void storeAny(void* x, Type value) noexcept { _mm256_storeu_si256(static_cast<Type*>(x), value); }
    // The products of the lower halves of the lanes.
    static Type multiply(Type a, Type b) noexcept { return _mm256_mul_epu32(a, b); }
    static Type add(Type a, Type b) noexcept { return _mm256_add_epi64(a, b); }
    static Type subtract(Type a, Type b) noexcept { return _mm256_sub_epi64(a, b); }
    static Type both(Type a, Type b) noexcept { return _mm256_and_si256(a, b); }
    static Type shiftRight(Type a, __m128i bits) noexcept { return _mm256_srl_epi64(a, bits); }
    static Type upperHalves(Type a) noexcept { return _mm256_srli_epi64(a, 32); }
    static Type toUpperHalves(Type a) noexcept { return _mm256_slli_epi64(a, 32); }
    // Zero in the lanes below first.
    static Type keepFrom(Type a, int first) noexcept { return both(a, loadAny(laneMasks + 4 - first)); }
    // The lanes moved up by one, with the top lane of the vector below.
    static Type moveUp(Type below, Type a) noexcept
    {
        return _mm256_alignr_epi8(a, _mm256_permute2x128_si256(below, a, 0x21), 8);
    }
};

} // namespace
} // namespace toolbelt
