// The decryption of RC6 over words of any width, one block or many; it belongs to the file that includes it, which
// brings along rotr, the rotation to the right by the lowest five bits of a word.
#pragma once

#include <cstddef>
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

// x: the words A, B, C, D of a block, or of several groups of blocks: their rounds take turns, as each waits long for
// its products.
template <typename Word, std::size_t GROUPS, typename Rotate>
[[gnu::always_inline]] inline void decryptRounds(const std::uint32_t* S, Word (&x)[GROUPS][4], Rotate rotr)
{
    // A and C came out of round i as B and D went in; what becomes A and C lies where D and B were.
    const auto undo = [&](std::uint32_t i, int A, int B, int C, int D) __attribute__((always_inline))
    {
#pragma GCC unroll 2
        for (Word(&w)[4] : x) {
            const Word t = f(w[A]), u = f(w[C]);
            w[B] = rotr(w[B] - S[2 * i + 1], t) ^ u;
            w[D] = rotr(w[D] - S[2 * i], u) ^ t;
        }
    };
    for (Word(&w)[4] : x) w[0] -= S[KEY_WORDS - 2], w[2] -= S[KEY_WORDS - 1];
    for (std::uint32_t i = ROUNDS; i != 0; i -= 4)
        undo(i, 0, 1, 2, 3), undo(i - 1, 3, 0, 1, 2), undo(i - 2, 2, 3, 0, 1), undo(i - 3, 1, 2, 3, 0);
    for (Word(&w)[4] : x) w[1] -= S[0], w[3] -= S[1];
}

} // namespace
} // namespace toolbelt
