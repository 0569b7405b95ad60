// Vectors of two 64-bit lanes. For files that are compiled for SSE2. The same operations as Avx2 has, each in its own
// instructions: the kernels are written once over either.
#pragma once

#include <emmintrin.h>

#include <cstdint>

namespace toolbelt {
namespace {

struct Sse2
{
    using Type = __m128i;
    static constexpr int LANES = 2;

    static Type zero() noexcept { return _mm_setzero_si128(); }
    static Type load(const void* x) noexcept { return _mm_load_si128(static_cast<const Type*>(x)); }
    static Type loadAny(const void* x) noexcept { return _mm_loadu_si128(static_cast<const Type*>(x)); }
    static Type broadcast(const std::uint64_t* x) noexcept
    {
        const Type low = _mm_loadl_epi64(reinterpret_cast<const Type*>(x));
        return _mm_unpacklo_epi64(low, low);
    }
    // In the lower half of every lane; the upper half is undefined.
    static Type broadcastWord(std::uint32_t x) noexcept { return _mm_set1_epi32(static_cast<int>(x)); }
    static void store(void* x, Type value) noexcept { _mm_store_si128(static_cast<Type*>(x), value); }
    static void storeAny(void* x, Type value) noexcept { _mm_storeu_si128(static_cast<Type*>(x), value); }
    // The products of the lower halves of the lanes.
    static Type multiply(Type a, Type b) noexcept { return _mm_mul_epu32(a, b); }
    static Type add(Type a, Type b) noexcept { return _mm_add_epi64(a, b); }
    static Type subtract(Type a, Type b) noexcept { return _mm_sub_epi64(a, b); }
    static Type both(Type a, Type b) noexcept { return _mm_and_si128(a, b); }
    static Type shiftRight(Type a, __m128i bits) noexcept { return _mm_srl_epi64(a, bits); }
    static Type upperHalves(Type a) noexcept { return _mm_srli_epi64(a, 32); }
    static Type toUpperHalves(Type a) noexcept { return _mm_slli_epi64(a, 32); }
    // The lanes moved up by one, with the top lane of the vector below.
    static Type moveUp(Type below, Type a) noexcept
    {
        return _mm_castpd_si128(_mm_shuffle_pd(_mm_castsi128_pd(below), _mm_castsi128_pd(a), 1));
    }
};

} // namespace
} // namespace toolbelt
