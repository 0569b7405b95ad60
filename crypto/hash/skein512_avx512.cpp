// Skein-512 on vector registers: compiled with flags of its own.
#include <immintrin.h>

#include "crypto/hash/skein512_pairs.h"

namespace toolbelt {
namespace {

[[gnu::always_inline]] inline Pair rotated(Pair x, Pair left, Pair /*right*/)
{
    return Pair(_mm_rolv_epi64(__m128i(x), __m128i(left)));
}

} // namespace

void skein512CompressAvx512(Skein512State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    compressPairs<rotated>(state, blocks, count);
}

} // namespace toolbelt
