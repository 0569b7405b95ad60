// Schoolbook products on AVX-512, eight columns a vector.
#include "crypto/bignum/columns_vector.h"

namespace toolbelt::limbs {
namespace {

struct Avx512
{
    using Type = __m512i;
    static constexpr int LANES = 8;

    static Type zero() noexcept { return _mm512_setzero_si512(); }
    static Type loadAny(const void* x) noexcept { return _mm512_loadu_si512(x); }
    static void storeAny(void* x, Type value) noexcept { _mm512_storeu_si512(x, value); }
    static Type broadcastWord(std::uint32_t x) noexcept { return _mm512_set1_epi32(static_cast<int>(x)); }
    static Type multiply(Type a, Type b) noexcept { return _mm512_mul_epu32(a, b); }
    static Type add(Type a, Type b) noexcept { return _mm512_add_epi64(a, b); }
    static Type subtract(Type a, Type b) noexcept { return _mm512_sub_epi64(a, b); }
    static Type upperHalves(Type a) noexcept { return _mm512_srli_epi64(a, 32); }
    static Type toUpperHalves(Type a) noexcept { return _mm512_slli_epi64(a, 32); }
    static Type moveUp(Type below, Type a) noexcept { return _mm512_alignr_epi64(a, below, 7); }
};

} // namespace

void multiplyColumnsAvx512(Limb* r, const Limb* a, std::size_t na, const Limb* b, std::size_t nb) noexcept
{
    multiplyColumns<Avx512>(r, a, na, b, nb);
}

} // namespace toolbelt::limbs
