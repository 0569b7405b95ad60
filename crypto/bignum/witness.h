// Fermat rounds that tell a failure of arithmetic or memory from a composite number, and the draw of their witnesses.
#pragma once

#include "crypto/base/runtime_rand.h"
#include "crypto/bignum/bignum.h"

namespace toolbelt::detail {

// Eight bytes of rand(), the first drawn on top: what bnRandom loads for eight bytes, without its memory.
inline std::uint64_t drawWitness() noexcept
{
    std::uint64_t witness = 0;
    for (int i = 0; i < 8; ++i) witness = witness << 8 | static_cast<std::uint8_t>(runtimeRand());
    return witness;
}

// Runs rounds on n until one fails, at most that many; passed counts those that did not. n is above 1.
[[nodiscard]] Status fermatRounds(std::uint32_t& passed, const BigNum& n, const BigNum& nMinusOne,
                                  std::uint32_t rounds) noexcept;

} // namespace toolbelt::detail
