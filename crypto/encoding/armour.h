// Armoured text: finding the base64 body between a begin and an end line, and the routines that decode into and encode
// from byte buffers. Header rules and line ends are this library's own and differ from RFC 4880.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/encoding/base64.h"
#include "crypto/encoding/byte_buffer.h"

namespace toolbelt {

inline constexpr std::uint32_t TEXT_ZERO_TERMINATED = 0xFFFFFFFF; // as a text length: the text ends at its first zero

// Finds the body between the lines, its header lines cut off. headerStart (null in *headerStart when there is no header),
// restStart and restLength (what follows the end line) are optional. TEXT_E_MALFORMED when a line is missing.
[[nodiscard]] TB_API Status findArmourBody(const char** bodyStart, std::uint32_t* bodyLength, const char* text,
                                           std::uint32_t textLength, const char* beginLine, const char* endLine,
                                           const char** headerStart = nullptr, const char** restStart = nullptr,
                                           std::uint32_t* restLength = nullptr);

// Characters at the start of a body that belong to header lines.
TB_API std::uint32_t armourHeaderLength(const char* body, std::uint32_t length);

// Decodes plain base64 text. The buffer's old contents are gone even when decoding fails; an empty result fails.
[[nodiscard]] TB_API bool base64DecodeToBuffer(cByteBuffer& buffer, const char* text, std::uint32_t textLength);
[[nodiscard]] TB_API bool base64DecodeToBuffer(cByteBuffer& buffer, const char* text);

// Decodes an armoured block, or plain base64 when beginLine is null. headerLine and trailingText (optional) receive the
// first header line and the line that follows the end line. A body that decodes to nothing is refused. On failure all
// three buffers are as they were.
[[nodiscard]] TB_API bool decodeArmoured(cByteBuffer& buffer, const char* text, std::uint32_t textLength,
                                         const char* beginLine, const char* endLine, cByteBuffer* headerLine = nullptr,
                                         cByteBuffer* trailingText = nullptr);

// The same into a caller's array, by base64Decode's rules for inOutSize.
[[nodiscard]] TB_API Status decodeArmouredInto(std::uint8_t* output, std::uint32_t* inOutSize, const char* text,
                                               std::uint32_t textLength, const char* beginLine, const char* endLine);

// Appends the encoded text to the buffer and proves it by decoding it back with the default alphabet. When the proof
// fails the appended text stays.
[[nodiscard]] TB_API bool encodeToBuffer(cByteBuffer& buffer, const std::uint8_t* data, std::uint32_t dataLength,
                                         const char* beginLine, const char* endLine, const char* versionText,
                                         const char* alphabet, std::uint32_t flags);

// Whether the armoured (or, without a begin line, plain) text decodes to exactly the expected bytes.
[[nodiscard]] TB_API bool armouredEquals(const char* text, std::uint32_t textLength, const std::uint8_t* expected,
                                         std::uint32_t expectedLength, const char* beginLine, const char* endLine);

} // namespace toolbelt
