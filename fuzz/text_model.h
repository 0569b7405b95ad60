// Base64 and armoured text by the decoder's rules, written anew and as short as it goes.
#pragma once

#include <string>

#include "crypto/encoding/armour.h"
#include "crypto/encoding/crc24.h"
#include "fuzz/target.h"

namespace toolbelt::fuzz {

struct DecodedText
{
    Status status = STATUS_OK;
    std::uint32_t size = 0; // that the decoder asks for
    Bytes bytes;
    std::size_t consumed = 0;
};

inline int digitOf(char c, const std::string& alphabet)
{
    const std::size_t at = alphabet.rfind(c, BASE64_PAD);
    return c == '\r' || c == '\n' || at == std::string::npos ? -1 : static_cast<int>(at);
}

// The first pass, which does not skip blanks behind a line break: they may be digits of an odd alphabet.
inline Status askSize(const std::string& text, const std::string& alphabet, std::uint32_t& size)
{
    std::uint32_t digits = 0, pads = 0;
    bool lineStart = true;
    for (const char c : text) {
        const int digit = digitOf(c, alphabet);
        if (digit == BASE64_PAD && lineStart) break;
        if (c == '\r' || c == '\n') lineStart = true;
        if (digit >= 0 && digit < BASE64_PAD) lineStart = false;
        pads += digit == BASE64_PAD;
        digits += digit >= 0 && digit < BASE64_PAD;
    }
    size = digits / 4 * 3 + (pads == 1 ? 2 : pads == 2);
    return pads > 2 ? TEXT_E_MALFORMED : STATUS_OK;
}

inline DecodedText decodeText(const std::string& text, const std::string& alphabet)
{
    DecodedText result;
    std::uint32_t digits = 0, group = 0;
    bool lineStart = true, checksum = false;
    std::size_t i = 0;
    for (; i < text.size() && !checksum; ++i) {
        const int digit = digitOf(text[i], alphabet);
        if (text[i] == '\r' || text[i] == '\n') {
            lineStart = true;
            while (i + 1 < text.size() && std::string("\r\n\t ").find(text[i + 1]) != std::string::npos) ++i;
        } else if (digit == BASE64_PAD && lineStart) {
            checksum = true;
        } else if (digit == BASE64_PAD) {
            group <<= 6;
        } else if (digit >= 0) {
            lineStart = false;
            group = group << 6 | static_cast<std::uint32_t>(digit);
            if (++digits % 4 == 0)
                for (const int shift : {16, 8, 0}) result.bytes.push_back(static_cast<std::uint8_t>(group >> shift));
        }
    }
    if (digits % 4 > 1) result.bytes.push_back(static_cast<std::uint8_t>(group >> 16));
    if (digits % 4 > 2) result.bytes.push_back(static_cast<std::uint8_t>(group >> 8));
    result.status = askSize(text, alphabet, result.size);
    if (result.status != STATUS_OK) {
        result.consumed = 0;
    } else if (digits / 4 * 3 > result.size) {
        result.status = TEXT_E_MALFORMED;
    } else if (checksum && text.size() - i < 4) {
        result.status = TEXT_E_CHECKSUM;
    } else if (result.bytes.size() > result.size) {
        result.status = TEXT_E_MALFORMED;
    } else if (checksum) {
        std::uint64_t value = 0; // a character that is no digit makes it too large
        for (const char c : text.substr(i, 4)) {
            const std::size_t digit = alphabet.rfind(c, BASE64_PAD);
            value = value << 6 | (digit < BASE64_PAD ? digit : 1u << 25);
        }
        if (value != crc24(result.bytes.data(), sizeOf(result.bytes))) result.status = TEXT_E_CHECKSUM;
        i += 4;
    }
    result.consumed = i;
    return result;
}

inline std::size_t headerLengthOf(const std::string& body)
{
    const std::string blanks = "\r\n\t ", separator = "\r\n\r\n \r\n\r\n";
    if (const std::size_t at = body.find(separator); at != std::string::npos) return at + separator.size();
    std::size_t base = 0;
    for (const std::string label : {"Version:", "Comment:"}) {
        const std::size_t at = body.find(label, base);
        if (at == std::string::npos || body.find_first_not_of(blanks, base) != at) continue;
        const std::size_t end = body.find('\n', at);
        if (end == std::string::npos) continue;
        if (label[0] == 'C') return end;
        base = end;
    }
    for (std::size_t at = body.find('\n', base); at != std::string::npos; at = body.find('\n', at + 1)) {
        const std::size_t next = body.find_first_not_of("\r\t ", at + 1);
        if (next != std::string::npos && body[next] == '\n') return next + 1;
    }
    return base;
}

} // namespace toolbelt::fuzz
