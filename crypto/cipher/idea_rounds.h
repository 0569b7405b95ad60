// The rounds of IDEA over words whose lower 16 bits count, of one block or many; it belongs to the file that includes
// it, which brings along multiply, the product modulo 65537.
#pragma once

#include <cstdint>

namespace toolbelt {
namespace {

constexpr std::uint32_t ROUNDS = 8;
constexpr std::uint32_t SUBKEYS = 6 * ROUNDS + 4;

template <typename Word, typename Multiply>
[[gnu::always_inline]] inline void transformRounds(const std::uint16_t* Z, Word (&x)[4], Multiply multiply)
{
    Word x1 = x[0], x2 = x[1], x3 = x[2], x4 = x[3];
    for (std::uint32_t round = 0; round < ROUNDS; ++round, Z += 6) {
        x1 = multiply(x1, Z[0]);
        x2 += Z[1];
        x3 += Z[2];
        x4 = multiply(x4, Z[3]);
        const Word t = multiply(x1 ^ x3, Z[4]);
        const Word sum = t + (x2 ^ x4), u = multiply(sum, Z[5]), v = t + u;
        const Word middle = x2 ^ v;
        x1 ^= u;
        x2 = x3 ^ u;
        x3 = middle;
        x4 ^= v;
    }
    // The last round does not exchange the middle words: take it back.
    x[0] = multiply(x1, Z[0]);
    x[1] = x3 + Z[1];
    x[2] = x2 + Z[2];
    x[3] = multiply(x4, Z[3]);
}

} // namespace
} // namespace toolbelt
