// The decryption of RC6 over words of any width, one block or many; it belongs to the file that includes it, which
// brings along rotr, the rotation to the right by the lowest five bits of a word.
#pragma once

#include <cstdint>

namespace toolbelt {
namespace {

constexpr std::uint32_t ROUNDS = 20;
constexpr std::uint32_t KEY_WORDS = 2 * ROUNDS + 4;

// f(x) = x(2x + 1) rotated left by lg 32: what makes the rotation amounts depend on all bits of a word.
template <typename Word>
[[gnu::always_inline]] inline Word f(Word x)
{
    const Word product = x * (2 * x + 1);
    return product << 5 | product >> 27;
}

// x: the words A, B, C, D of a block.
template <typename Word, typename Rotate>
[[gnu::always_inline]] inline void decryptRounds(const std::uint32_t* S, Word (&x)[4], Rotate rotr)
{
    Word A = x[0] - S[KEY_WORDS - 2], B = x[1], C = x[2] - S[KEY_WORDS - 1], D = x[3];
    for (std::uint32_t i = ROUNDS; i >= 1; --i) {
        const Word t = f(A), u = f(C); // A and C came out of the round as B and D went in
        const Word oldC = rotr(B - S[2 * i + 1], t) ^ u;
        B = A;
        A = rotr(D - S[2 * i], u) ^ t;
        D = C;
        C = oldC;
    }
    x[0] = A, x[1] = B - S[0], x[2] = C, x[3] = D - S[1];
}

} // namespace
} // namespace toolbelt
