// The Montgomery product on AVX2, four digits a vector.
#include "crypto/bignum/montgomery_vector.h"
#include "crypto/bignum/vector_avx2.h"

namespace toolbelt {

const MontgomeryKernel montgomeryAvx2 = {Avx2::LANES, false, VectorProduct<Avx2>::product};

} // namespace toolbelt
