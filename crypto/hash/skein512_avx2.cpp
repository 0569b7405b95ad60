// Skein-512 on vector registers: compiled with flags of its own.
#include "crypto/hash/skein512_pairs.h"

namespace toolbelt {
namespace {

[[gnu::always_inline]] inline Pair rotated(Pair x, Pair left, Pair right)
{
    return x << left | x >> right;
}

} // namespace

void skein512CompressAvx2(Skein512State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    compressPairs<rotated>(state, blocks, count);
}

} // namespace toolbelt
