#include "Includes/stringFuncs/text_decode.h"

#include <cstring>

namespace toolbelt {
namespace {

constexpr std::int32_t DEFAULT_CODE_PAGE = -1;
constexpr std::int32_t UTF8_CODE_PAGE = 65001;

bool decodeUtf16(cWCS& text, const std::uint8_t* bytes, std::size_t size, bool bigEndian)
{
    const std::size_t units = size / 2;
    // Room first, then the units in place: bytes in a view may lie at any address.
    if (text.Append(nullptr, static_cast<std::int32_t>(units)) == 0) return false;
    wchar_t* const target = text.text();
    std::memcpy(target, bytes, units * sizeof(wchar_t));
    if (bigEndian)
        for (std::size_t i = 0; i < units; ++i)
            target[i] = static_cast<wchar_t>(__builtin_bswap16(static_cast<std::uint16_t>(target[i])));
    return true;
}

bool decodeMultibyte(cWCS& text, const std::uint8_t* bytes, std::size_t size, std::int32_t codePage)
{
    text.AssignMultibyte(reinterpret_cast<const char*>(bytes), static_cast<std::int32_t>(size), codePage);
    return text.text() != nullptr;
}

} // namespace

RecognisedText recogniseText(const std::uint8_t* bytes, std::size_t size)
{
    if (size < 2) return {TextEncoding::multibyte, 0};
    if (bytes[0] == 0xFF && bytes[1] == 0xFE) return {TextEncoding::utf16le, 2};
    if (bytes[0] == 0xFE && bytes[1] == 0xFF) return {TextEncoding::utf16be, 2};
    if (size >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF) return {TextEncoding::utf8, 3};
    if (bytes[0] == 0) return {TextEncoding::utf16be, 0};
    if (bytes[1] == 0) return {TextEncoding::utf16le, 0};
    return {TextEncoding::multibyte, 0};
}

bool decodeText(cWCS& text, const std::uint8_t* bytes, std::size_t size, TextEncoding* encoding)
{
    if (size > INT32_MAX) return false; // beyond what a string counts, and beyond the memory of its process
    const RecognisedText recognised = recogniseText(bytes, size);
    const std::uint8_t* const body = size > 0 ? bytes + recognised.markSize : reinterpret_cast<const std::uint8_t*>("");
    const std::size_t bodySize = size - recognised.markSize;

    cWCS decoded;
    bool done = false;
    switch (recognised.encoding) {
    case TextEncoding::utf16le:
    case TextEncoding::utf16be:
        done = decodeUtf16(decoded, body, bodySize, recognised.encoding == TextEncoding::utf16be);
        break;
    case TextEncoding::utf8:
        done = decodeMultibyte(decoded, body, bodySize, UTF8_CODE_PAGE);
        break;
    case TextEncoding::multibyte:
        done = decodeMultibyte(decoded, body, bodySize, DEFAULT_CODE_PAGE);
        break;
    }
    if (!done) return false;
    text.swap(decoded);
    if (encoding) *encoding = recognised.encoding;
    return true;
}

} // namespace toolbelt
