// Armoured text: finding the base64 body between a begin and an end line, and the routines that decode into and encode
// from byte buffers. Header rules and line ends are this library's own and differ from RFC 4880.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/encoding/base64.h"
#include "crypto/encoding/byte_buffer.h"

namespace toolbelt {

// As the textLength of decodeArmoured: the text ends at its first zero.
inline constexpr std::uint32_t TEXT_ZERO_TERMINATED = 0xFFFFFFFF;

// Finds the body between the lines, its header lines cut off; the lines are found anywhere, not at line starts only.
// headerStart, restStart and restLength (what follows the end line) are optional. *headerStart becomes null when there
// is no header part; when that is nothing but an empty line, it points to the first line of the body. TEXT_E_MALFORMED,
// and all outputs as they were, when a line is missing in the text or null.
[[nodiscard]] TB_API Status findArmourBody(const char** bodyStart, std::uint32_t* bodyLength, const char* text,
                                           std::uint32_t textLength, const char* beginLine, const char* endLine,
                                           const char** headerStart = nullptr, const char** restStart = nullptr,
                                           std::uint32_t* restLength = nullptr);

// Characters at the start of a body that belong to header lines: up to the end of a "Version:" and then a "Comment:"
// line that stand first, or just behind the first empty line, wherever in the body that is.
TB_API std::uint32_t armourHeaderLength(const char* body, std::uint32_t length);

// Decodes plain base64 text by the default alphabet. A text without a size (malformed or empty) leaves the buffer
// alone; otherwise its old contents are gone (text must not lie in them) even when decoding or memory then fails.
[[nodiscard]] TB_API bool base64DecodeToBuffer(cByteBuffer& buffer, const char* text, std::uint32_t textLength);
[[nodiscard]] TB_API bool base64DecodeToBuffer(cByteBuffer& buffer, const char* text);

// Decodes an armoured block, or plain base64, up to endLine or the end of the text, when beginLine is null. headerLine
// and trailingText (optional) receive the line at findArmourBody's headerStart, without its LF, and what follows the
// end line up to a zero, CR or LF; they become empty when there is none. A body that decodes to nothing is refused. On
// failure all three buffers are as they were.
[[nodiscard]] TB_API bool decodeArmoured(cByteBuffer& buffer, const char* text, std::uint32_t textLength,
                                         const char* beginLine, const char* endLine, cByteBuffer* headerLine = nullptr,
                                         cByteBuffer* trailingText = nullptr);

// findArmourBody, then base64Decode into a caller's array, by its rules for inOutSize.
[[nodiscard]] TB_API Status decodeArmouredInto(std::uint8_t* output, std::uint32_t* inOutSize, const char* text,
                                               std::uint32_t textLength, const char* beginLine, const char* endLine);

// Appends the encoded text to the buffer and proves it by decoding it back with the default alphabet and the same
// lines. When the proof fails the appended text stays; empty data cannot be proved. data must not lie in the buffer.
[[nodiscard]] TB_API bool encodeToBuffer(cByteBuffer& buffer, const std::uint8_t* data, std::uint32_t dataLength,
                                         const char* beginLine, const char* endLine, const char* versionText,
                                         const char* alphabet, std::uint32_t flags);

// Whether the armoured (or, without a begin line, plain) text decodes to exactly the expected bytes, one or more.
[[nodiscard]] TB_API bool armouredEquals(const char* text, std::uint32_t textLength, const std::uint8_t* expected,
                                         std::uint32_t expectedLength, const char* beginLine, const char* endLine);

} // namespace toolbelt
