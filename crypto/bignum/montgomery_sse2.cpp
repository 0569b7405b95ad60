// The Montgomery product on SSE2, two digits a vector.
#include "crypto/bignum/montgomery_vector.h"
#include "crypto/bignum/vector_sse2.h"

namespace toolbelt {

const MontgomeryKernel montgomerySse2 = {Sse2::LANES, false, VectorProduct<Sse2>::product};

} // namespace toolbelt
