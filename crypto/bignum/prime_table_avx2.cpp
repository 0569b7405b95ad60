// Fermat rounds of the small-prime table on AVX2, four candidates a vector.
#include "crypto/bignum/prime_table_vector.h"
#include "crypto/bignum/vector_avx2.h"

namespace toolbelt {

std::uint32_t fermatRoundsAvx2(std::uint32_t first, const std::uint32_t* witnesses) noexcept
{
    return fermatRounds<Avx2>(first, witnesses);
}

} // namespace toolbelt
