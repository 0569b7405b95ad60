// Bytes of a text file to 16-bit units: which encoding they are in, and the decoding.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Includes/stringFuncs/wcs.h"

namespace toolbelt {

enum class TextEncoding : std::int32_t
{
    multibyte, // the default code page (DefaultCodePage)
    utf8,      // told by its mark
    utf16le,
    utf16be,
};

struct RecognisedText
{
    TextEncoding encoding;
    std::size_t markSize; // bytes in front of the text that are not part of it
};

// From a mark, or from a zero among the first two bytes; a single byte is multibyte text whatever it is.
RecognisedText recogniseText(const std::uint8_t* bytes, std::size_t size);

// Replaces the text by the decoded bytes, and puts the encoding out when asked to; zero units are kept, the last byte
// of an odd count of UTF-16 bytes is dropped. A text without characters is empty, not null. False when memory runs out:
// the outputs are as they were.
TB_API bool decodeText(cWCS& text, const std::uint8_t* bytes, std::size_t size, TextEncoding* encoding = nullptr);

} // namespace toolbelt
