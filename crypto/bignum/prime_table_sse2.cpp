// Fermat rounds of the small-prime table on SSE2, two candidates a vector.
#include "crypto/bignum/prime_table_vector.h"
#include "crypto/bignum/vector_sse2.h"

namespace toolbelt {

std::uint32_t fermatRoundsSse2(std::uint32_t first, const std::uint32_t* witnesses) noexcept
{
    return fermatRounds<Sse2>(first, witnesses);
}

} // namespace toolbelt
