// Base64 on vector registers, for the standard alphabet; only where cpu::AVX2 is in use. These take what is plain in a
// text, 32 digits at a time, and leave everything else, from its first character on, to the portable routines.
#pragma once

#include <cstdint>

namespace toolbelt {

// Encodes whole lines, 48 bytes as 64 digits, each followed by CR LF when there are breaks. Not the last line, if it is
// whole or not. Returns the bytes encoded.
std::uint32_t base64EncodeAvx2(char* output, const std::uint8_t* data, std::uint32_t length, bool breaks);

inline constexpr std::uint32_t BASE64_RUN_DIGITS = 32; // no run is shorter

// What was taken from a text: characters, and the digits among them, a multiple of 32.
struct Base64Run
{
    std::uint32_t characters;
    std::uint32_t digits;
};

// Takes groups of 32 digits, and a CR LF before such a group but not at the start, and writes 24 bytes a group, not
// more than room.
Base64Run base64DecodeAvx2(std::uint8_t* output, std::uint32_t room, const char* text, std::uint32_t length);
// The same without decoding.
Base64Run base64MeasureAvx2(const char* text, std::uint32_t length);

} // namespace toolbelt
