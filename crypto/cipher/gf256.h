// Arithmetic in GF(2^8), for the tables that are derived while compiling.
#pragma once

#include <array>
#include <cstdint>

namespace toolbelt {

// The product modulo a polynomial of degree 8, bit 8 included.
constexpr std::uint8_t gfMultiply(std::uint32_t a, std::uint32_t b, std::uint32_t polynomial)
{
    std::uint32_t product = 0;
    for (; b != 0; b >>= 1) {
        if (b & 1) product ^= a;
        a <<= 1;
        if (a & 0x100) a ^= polynomial;
    }
    return static_cast<std::uint8_t>(product);
}

// Rijndael's field and its S-box, which ARIA has as well: the inverse (0 stays 0), then an affine map.
constexpr std::uint32_t RIJNDAEL_POLYNOMIAL = 0x11B;

constexpr std::uint8_t gfInverse(std::uint32_t x)
{
    std::uint8_t power = 1; // x^254 = x^2 * x^4 * ... * x^128
    std::uint8_t square = static_cast<std::uint8_t>(x);
    for (int i = 1; i < 8; ++i) {
        square = gfMultiply(square, square, RIJNDAEL_POLYNOMIAL);
        power = gfMultiply(power, square, RIJNDAEL_POLYNOMIAL);
    }
    return power;
}

using ByteBox = std::array<std::uint8_t, 256>;

constexpr ByteBox inverseBox(const ByteBox& box)
{
    ByteBox inverse = {};
    for (std::uint32_t x = 0; x < 256; ++x) inverse[box[x]] = static_cast<std::uint8_t>(x);
    return inverse;
}

constexpr ByteBox makeRijndaelBox()
{
    ByteBox box = {};
    for (std::uint32_t x = 0; x < 256; ++x) {
        const std::uint32_t y = gfInverse(x);
        const std::uint32_t twice = y << 8 | y; // rotations of a byte to the left are shifts of this to the right
        box[x] = static_cast<std::uint8_t>(y ^ twice >> 7 ^ twice >> 6 ^ twice >> 5 ^ twice >> 4 ^ 0x63);
    }
    return box;
}

inline constexpr ByteBox rijndaelBox = makeRijndaelBox();

} // namespace toolbelt
