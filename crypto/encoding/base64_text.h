// What the base64 encoder and decoder share; not part of the public interface.
#pragma once

#include <cstdint>
#include <cstring>

#include "crypto/encoding/base64.h"

namespace toolbelt {

inline constexpr std::uint32_t BASE64_CHECKSUM_DIGITS = 4;
inline constexpr std::uint32_t BASE64_NO_VALUE = 0xFFFFFFFF; // no checksum equals this

// The 24-bit value of four characters, BASE64_NO_VALUE when one of them is not a digit of the alphabet.
std::uint32_t readChecksum(const char* characters, const char* alphabet);

inline bool isStandardAlphabet(const char* alphabet)
{
    return std::memcmp(alphabet, BASE64_STANDARD_ALPHABET, BASE64_PAD + 1) == 0;
}

inline const char* alphabetOrDefault(const char* alphabet)
{
    return alphabet ? alphabet : defaultAlphabet();
}

} // namespace toolbelt
