// Schoolbook products on SSE2, two columns a vector.
#include "crypto/bignum/columns_vector.h"
#include "crypto/bignum/vector_sse2.h"

namespace toolbelt::limbs {

void multiplyColumnsSse2(Limb* r, const Limb* a, std::size_t na, const Limb* b, std::size_t nb) noexcept
{
    multiplyColumns<Sse2>(r, a, na, b, nb);
}

} // namespace toolbelt::limbs
