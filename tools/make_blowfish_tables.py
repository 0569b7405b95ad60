#!/usr/bin/env python3
"""Writes crypto/cipher/blowfish_tables.h to the standard output: 18 + 4 * 256 words of the fraction of pi."""

GUARD_BITS = 64
WORDS = 18 + 4 * 256
BITS = 32 * WORDS


def arctan_of_inverse(n, one):
    """arctan(1 / n) as a multiple of 1 / one, by its power series."""
    power = total = one // n
    divisor = sign = 1
    while power:
        power //= n * n
        divisor += 2
        sign = -sign
        total += sign * (power // divisor)
    return total


def braced(words):
    lines = [words[i:i + 8] for i in range(0, len(words), 8)]
    return "    {" + ",\n     ".join(", ".join(f"0x{word:08X}" for word in line) for line in lines) + "}"


def main():
    one = 1 << (BITS + GUARD_BITS)
    pi = 4 * (4 * arctan_of_inverse(5, one) - arctan_of_inverse(239, one))  # Machin's formula
    fraction = (pi - 3 * one) >> GUARD_BITS
    words = [fraction >> (BITS - 32 * (i + 1)) & 0xFFFFFFFF for i in range(WORDS)]
    print("// The starting values of Blowfish, in order the fraction of pi. Made by tools/make_blowfish_tables.py.\n"
          "#pragma once\n\n#include <cstdint>\n\nnamespace toolbelt {\n\n// clang-format off")
    print("inline constexpr std::uint32_t blowfishP[18] =\n" + braced(words[:18]) + ";\n")
    boxes = [braced(words[i:i + 256]) for i in range(18, WORDS, 256)]
    print("inline constexpr std::uint32_t blowfishS[4][256] = {\n" + ",\n".join(boxes) + "};")
    print("// clang-format on\n\n} // namespace toolbelt")


main()
