// Keccak-f[1600] on vector registers: compiled with flags of its own.
#include "crypto/hash/keccak512_lanes.h"

namespace toolbelt {

void keccak512AbsorbSse2(KeccakState& lanes, const std::uint8_t* blocks, std::uint32_t count)
{
    absorbLanes(lanes, blocks, count);
}

} // namespace toolbelt
