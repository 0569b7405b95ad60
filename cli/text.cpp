#include "cli/text.h"

#include <windows.h>

#include <cstdio>

#include "crypto/bignum/bignum.h"

namespace toolbelt::cli {
namespace {

constexpr std::uint32_t NOT_A_CHARACTER = 0xFFFFFFFF;

int hexDigit(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool hasHexPrefix(std::string_view text)
{
    return text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

struct Decoded
{
    std::uint32_t character; // NOT_A_CHARACTER: the bytes are not of the charset
    std::size_t length;      // bytes taken, at least one
};

// Strict: no overlong form, no surrogate, nothing above U+10FFFF.
Decoded decodeUtf8(const std::uint8_t* bytes, std::size_t size)
{
    const std::uint8_t lead = bytes[0];
    if (lead < 0x80) return {lead, 1};
    const std::size_t length = lead >= 0xC2 && lead < 0xE0   ? 2
                               : lead >= 0xE0 && lead < 0xF0 ? 3
                               : lead >= 0xF0 && lead < 0xF5 ? 4
                                                             : 0;
    if (length == 0 || length > size) return {NOT_A_CHARACTER, 1};
    std::uint32_t character = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((bytes[i] & 0xC0) != 0x80) return {NOT_A_CHARACTER, 1};
        character = character << 6 | (bytes[i] & 0x3Fu);
    }
    const bool valid = (length != 3 || character >= 0x800) &&
                       (length != 4 || (character >= 0x10000 && character < 0x110000)) &&
                       (character < 0xD800 || character > 0xDFFF);
    return valid ? Decoded{character, length} : Decoded{NOT_A_CHARACTER, 1};
}

Decoded decodeUtf16(const std::uint8_t* bytes, std::size_t size)
{
    if (size < 2) return {NOT_A_CHARACTER, 1};
    const std::uint32_t unit = std::uint32_t(bytes[0]) << 8 | bytes[1];
    if (unit < 0xD800 || unit > 0xDFFF) return {unit, 2};
    if (unit > 0xDBFF || size < 4) return {NOT_A_CHARACTER, 2};
    const std::uint32_t low = std::uint32_t(bytes[2]) << 8 | bytes[3];
    if (low < 0xDC00 || low > 0xDFFF) return {NOT_A_CHARACTER, 2};
    return {0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00), 4};
}

Decoded decode(const std::uint8_t* bytes, std::size_t size, Charset charset)
{
    if (charset == Charset::utf8) return decodeUtf8(bytes, size);
    if (charset == Charset::utf16) return decodeUtf16(bytes, size);
    return {bytes[0], 1};
}

// Controls, and what changes the direction or the joining of other text without being seen.
bool isDeceptive(std::uint32_t c)
{
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0xAD || c == 0x61C || (c >= 0x200B && c <= 0x200F) ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF ||
           (c >= 0xFFF0 && c <= 0xFFFB) || (c & 0xFFFE) == 0xFFFE || (c >= 0xE0000 && c <= 0xE0FFF);
}

void appendUtf8(std::string& text, std::uint32_t c)
{
    if (c < 0x80) {
        text += static_cast<char>(c);
        return;
    }
    const unsigned more = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    constexpr std::uint8_t leads[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(leads[more] | (c >> (6 * more)));
    for (unsigned i = more; i-- > 0;) text += static_cast<char>(0x80 | ((c >> (6 * i)) & 0x3F));
}

void appendCode(std::string& text, const char* form, std::uint32_t code)
{
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, form, static_cast<unsigned>(code));
    text += buffer;
}

} // namespace

std::wstring toWide(std::string_view utf8)
{
    const int size = static_cast<int>(utf8.size());
    std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::string toUtf8(std::wstring_view wide)
{
    const int size = static_cast<int>(wide.size());
    std::string utf8(
        static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr)),
        '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, utf8.data(), static_cast<int>(utf8.size()), nullptr, nullptr);
    return utf8;
}

std::string toHex(const std::uint8_t* bytes, std::size_t size, std::size_t cut)
{
    std::string text;
    const std::size_t shown = size <= cut ? size : cut;
    text.reserve(2 * shown);
    for (std::size_t i = 0; i < shown; ++i) {
        text += "0123456789abcdef"[bytes[i] >> 4];
        text += "0123456789abcdef"[bytes[i] & 15];
    }
    if (shown < size) text += "... (" + std::to_string(size) + " bytes)";
    return text;
}

std::optional<std::vector<std::uint8_t>> parseHex(std::string_view text)
{
    if (hasHexPrefix(text)) text.remove_prefix(2);
    if (text.empty()) return std::nullopt;
    std::vector<std::uint8_t> bytes((text.size() + 1) / 2);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int digit = hexDigit(text[text.size() - 1 - i]);
        if (digit < 0) return std::nullopt;
        std::uint8_t& byte = bytes[bytes.size() - 1 - i / 2];
        byte = static_cast<std::uint8_t>(byte | digit << (i % 2 * 4));
    }
    return bytes;
}

std::optional<std::uint32_t> parseNumber(std::string_view text)
{
    const std::uint32_t base = hasHexPrefix(text) ? 16 : 10;
    if (base == 16) text.remove_prefix(2);
    if (text.empty()) return std::nullopt;
    std::uint64_t value = 0;
    for (const char c : text) {
        const int digit = hexDigit(c);
        if (digit < 0 || digit >= static_cast<int>(base)) return std::nullopt;
        value = value * base + static_cast<std::uint32_t>(digit);
        if (value > 0xFFFFFFFF) return std::nullopt;
    }
    return static_cast<std::uint32_t>(value);
}

std::string numberText(const BigNum& number)
{
    std::vector<std::uint8_t> bytes((bnBitLength(number) + 7) / 8);
    bnExport(bytes.data(), static_cast<std::uint32_t>(bytes.size()), number);
    const std::string hex = toHex(bytes.data(), bytes.size());
    const std::size_t first = hex.find_first_not_of('0');
    return first == std::string::npos ? "0" : hex.substr(first);
}

std::string toLower(std::string_view ascii)
{
    std::string text(ascii);
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

std::string idText(std::int32_t id)
{
    const std::uint8_t byte = static_cast<std::uint8_t>(id);
    return id < 0x80 ? std::to_string(id) : "0x" + toHex(&byte, 1);
}

std::string plainName(std::string_view name)
{
    std::string plain = toLower(name);
    std::erase_if(plain, [](char c) { return c == '-' || c == '_' || c == ' '; });
    return plain;
}

std::string readable(const std::uint8_t* bytes, std::size_t size, Charset charset, std::string_view quoted)
{
    std::string text;
    for (std::size_t at = 0; at < size;) {
        const auto [character, length] = decode(bytes + at, size - at, charset);
        if (character == NOT_A_CHARACTER) {
            for (std::size_t i = 0; i < length; ++i) appendCode(text, "\\x%02x", bytes[at + i]);
        } else if (isDeceptive(character)) {
            appendCode(text, character < 0x100 ? "\\x%02x" : character < 0x10000 ? "\\u%04x" : "\\U%08x", character);
        } else {
            if (character < 0x80 &&
                (character == '\\' || quoted.find(static_cast<char>(character)) != std::string_view::npos))
                text += '\\';
            appendUtf8(text, character);
        }
        at += length;
    }
    return text;
}

} // namespace toolbelt::cli
