// Base64 with a selectable alphabet, and the armoured text that base64Encode can wrap around it: begin and end lines, a
// version line, and the CRC-24 checksum line of RFC 4880. Texts are 8-bit characters; no terminating zero is written.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/encoding/status.h"

namespace toolbelt {

// An alphabet: 64 digits, then the pad character. Where one is asked for, null selects the process-wide default.
inline constexpr char BASE64_STANDARD_ALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
inline constexpr std::int32_t BASE64_PAD = 64;

// Switches the whole process to another default alphabet, of 65 characters that stay valid; null restores the standard
// one. Returns the one before. Nothing locks it: set it while no other thread codes.
TB_API const char* setDefaultAlphabet(const char* alphabet);
const char* defaultAlphabet();

// The highest position of the character in the alphabet, -1 when it is not there.
TB_API std::int32_t base64Index(char character, const char* alphabet = nullptr);

enum Base64Flags : std::uint32_t
{
    BASE64_NO_CHECKSUM = 1,
    BASE64_NO_BREAKS = 2, // ignored when there is a checksum line, a begin and an end line, or a version text
};
inline constexpr std::uint32_t BASE64_LINE_LENGTH = 64;

// Writes data as text. *inOutSize is the capacity on entry and the exact number of characters needed on return.
// beginLine and endLine count only when both are given, versionText when it is not empty. Output is untouched by
// STATUS_BUFFER_TOO_SMALL (null with a capacity of 0 asks for the size) and by TEXT_E_CONSISTENCY: the text would not
// fit 32 bits, or the alphabet holds a character twice and the checksum could not be read back. The checksum line opens
// with "=" whatever the alphabet: with another pad, base64Decode does not know it.
[[nodiscard]] TB_API Status base64Encode(char* output, std::uint32_t* inOutSize, const std::uint8_t* data,
                                         std::uint32_t dataLength, const char* beginLine = nullptr,
                                         const char* endLine = nullptr, const char* versionText = nullptr,
                                         const char* alphabet = nullptr, std::uint32_t flags = 0);

// Reads text. *inOutSize is the capacity on entry and the number of bytes written on return, or the size needed, with
// STATUS_BUFFER_TOO_SMALL. Characters outside the alphabet are skipped. A pad character at the start of a line (the
// start of the text is one, and blanks before it do not count) opens the checksum line, which ends the reading. A last
// group of two or three digits needs its pads, one digit left over is dropped. consumed (optional) receives, on success
// only, the number of characters read. TEXT_E_MALFORMED, and TEXT_E_CHECKSUM for a checksum line cut short, leave
// *inOutSize alone and overwrite with zeros what had been decoded; when the checksum does not match, the bytes and
// their number are stored.
[[nodiscard]] TB_API Status base64Decode(std::uint8_t* output, std::uint32_t* inOutSize, const char* text,
                                         std::uint32_t textLength, const char* alphabet = nullptr,
                                         std::uint32_t* consumed = nullptr);

} // namespace toolbelt
