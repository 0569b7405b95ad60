// The random pool: a process-wide buffer of random bytes that the application fills, from which DSA and ElGamal take
// their per-operation secrets. Not guarded: one thread signs or encrypts at a time.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/pka/status.h"

namespace toolbelt {

// The pool reads from the caller's buffer, which stays the caller's and must live until the pool is reset; position and
// shortfall become 0. Bytes are wiped in the caller's buffer as they are taken. Null or 0 empties the pool. A pool that
// is replaced is not wiped: reset it first.
TB_API void setRandomPool(std::uint8_t* bytes, std::uint32_t size);
// Forgets the buffer; what was left in it is wiped.
TB_API void resetRandomPool();
// Size of the last request that could not be met, 0 when there was none since the pool was set.
TB_API std::uint32_t randomPoolShortfall();
// Copies the next size bytes out; PKA_E_RANDOM, and nothing taken, when fewer remain.
[[nodiscard]] Status takeRandom(std::uint8_t* output, std::uint32_t size);

} // namespace toolbelt
