// What the routines of ARIA have in common: boxes, round keys, and the mixing of words of any width. It belongs to the
// file that includes it.
#pragma once

#include <cstdint>

#include "crypto/cipher/gf256.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t MOST_ROUNDS = 16;

// S1 is the S-box of Rijndael, S2 an affine map of x^247; X1 and X2 are their inverses.
constexpr const ByteBox& S1 = rijndaelBox;
constexpr ByteBox S2 = [] {
    // What bit i of the power adds to the output.
    constexpr std::uint8_t column[8] = {0xAC, 0xC5, 0x12, 0xCF, 0x5B, 0x5F, 0x85, 0xEE};
    ByteBox box = {};
    for (std::uint32_t x = 0; x < 256; ++x) {
        std::uint32_t power = 1; // 247 = 11110111 in binary
        for (std::uint32_t bit = 8; bit-- != 0;) {
            power = gfMultiply(power, power, RIJNDAEL_POLYNOMIAL);
            if (247 >> bit & 1) power = gfMultiply(power, x, RIJNDAEL_POLYNOMIAL);
        }
        box[x] = 0xE2;
        for (std::uint32_t bit = 0; bit < 8; ++bit)
            if (power >> bit & 1) box[x] ^= column[bit];
    }
    return box;
}();
constexpr ByteBox X1 = inverseBox(S1);
constexpr ByteBox X2 = inverseBox(S2);

// A word is four bytes of one block, or of many.
template <typename Word>
struct ValueOf
{
    Word w[4];

    [[gnu::always_inline]] ValueOf& operator^=(const ValueOf& other)
    {
#pragma GCC unroll 4
        for (int i = 0; i < 4; ++i) w[i] ^= other.w[i];
        return *this;
    }
};
using Value = ValueOf<std::uint32_t>;

// The keys of one direction.
struct ARIAKeys
{
    Value key[MOST_ROUNDS + 1];
    std::uint32_t rounds;
};

template <typename Word>
[[gnu::always_inline]] inline void mixWords(ValueOf<Word>& v)
{
    v.w[1] ^= v.w[2];
    v.w[2] ^= v.w[3];
    v.w[0] ^= v.w[1];
    v.w[3] ^= v.w[1];
    v.w[2] ^= v.w[0];
    v.w[1] ^= v.w[2];
}

} // namespace
} // namespace toolbelt
