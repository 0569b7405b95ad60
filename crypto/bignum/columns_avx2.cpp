// Schoolbook products on AVX2, four columns a vector.
#include "crypto/bignum/columns_vector.h"
#include "crypto/bignum/vector_avx2.h"

namespace toolbelt::limbs {

void multiplyColumnsAvx2(Limb* r, const Limb* a, std::size_t na, const Limb* b, std::size_t nb) noexcept
{
    multiplyColumns<Avx2>(r, a, na, b, nb);
}

} // namespace toolbelt::limbs
