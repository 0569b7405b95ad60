// Base64 encoding, with the lines that make it an armoured block. The size is worked out first, in 64 bits; what can
// fail fails before the first character is written; the check of the length at the end is a safeguard.
#include <algorithm>
#include <cstring>

#include "crypto/base/cpu.h"
#include "crypto/encoding/base64.h"
#include "crypto/encoding/base64_avx2.h"
#include "crypto/encoding/base64_text.h"
#include "crypto/encoding/crc24.h"

namespace toolbelt {
namespace {

constexpr char LINE_END[] = {'\r', '\n'};
constexpr char VERSION_LABEL[] = "Version: ";
constexpr std::uint32_t VERSION_LABEL_LENGTH = sizeof VERSION_LABEL - 1;
constexpr std::uint32_t LINE_BYTES = BASE64_LINE_LENGTH / 4 * 3;

// What the text consists of. Absent parts have a length of 0 and null texts.
struct Layout
{
    bool checksum = false;
    bool breaks = false;
    const char* beginLine = nullptr; // both lines, or none
    const char* endLine = nullptr;
    const char* versionText = nullptr;
    std::size_t beginLength = 0;
    std::size_t endLength = 0;
    std::size_t versionLength = 0;
};

Layout makeLayout(const char* beginLine, const char* endLine, const char* versionText, std::uint32_t flags)
{
    Layout layout;
    layout.checksum = (flags & BASE64_NO_CHECKSUM) == 0;
    if (beginLine != nullptr && endLine != nullptr) {
        layout.beginLine = beginLine;
        layout.beginLength = std::strlen(beginLine);
        layout.endLine = endLine;
        layout.endLength = std::strlen(endLine);
    }
    if (versionText != nullptr && *versionText != 0) {
        layout.versionText = versionText;
        layout.versionLength = std::strlen(versionText);
    }
    layout.breaks = (flags & BASE64_NO_BREAKS) == 0 || layout.checksum || layout.beginLine || layout.versionText;
    return layout;
}

// Every part is far below 2^62 characters, so nothing overflows here.
std::uint64_t textSize(const Layout& layout, std::uint32_t dataLength)
{
    std::uint64_t characters = (std::uint64_t(dataLength) + 2) / 3 * 4;
    std::uint64_t lines = (characters + BASE64_LINE_LENGTH - 1) / BASE64_LINE_LENGTH;
    if (layout.checksum) {
        characters += 1 + BASE64_CHECKSUM_DIGITS;
        lines += 1;
    }
    if (layout.beginLine) {
        characters += std::uint64_t(layout.beginLength) + layout.endLength;
        lines += 2;
    }
    if (layout.versionText) {
        characters += VERSION_LABEL_LENGTH + std::uint64_t(layout.versionLength);
        lines += 2; // the version line and the empty line behind it
    }
    return layout.breaks ? characters + lines * sizeof LINE_END : characters;
}

char* put(char* output, const char* text, std::size_t length)
{
    std::memcpy(output, text, length);
    return output + length;
}

char* putDigits(char* output, std::uint32_t value24, const char* alphabet)
{
    output[0] = alphabet[value24 >> 18];
    output[1] = alphabet[value24 >> 12 & 63];
    output[2] = alphabet[value24 >> 6 & 63];
    output[3] = alphabet[value24 & 63];
    return output + 4;
}

char* putBytes(char* output, const std::uint8_t* data, std::uint32_t length, const char* alphabet)
{
    for (; length >= 3; data += 3, length -= 3) {
        const std::uint32_t group = std::uint32_t(data[0]) << 16 | std::uint32_t(data[1]) << 8 | data[2];
        output = putDigits(output, group, alphabet);
    }
    if (length == 0) return output;
    const std::uint32_t second = length == 2 ? data[1] : 0;
    output = putDigits(output, std::uint32_t(data[0]) << 16 | second << 8, alphabet);
    output[-1] = alphabet[BASE64_PAD];
    if (length == 1) output[-2] = alphabet[BASE64_PAD];
    return output;
}

char* putBody(char* output, const std::uint8_t* data, std::uint32_t length, const char* alphabet, bool breaks)
{
    if (cpu::has(cpu::AVX2) && isStandardAlphabet(alphabet)) {
        const std::uint32_t done = base64EncodeAvx2(output, data, length, breaks);
        output += done / LINE_BYTES * (BASE64_LINE_LENGTH + (breaks ? sizeof LINE_END : 0));
        data += done;
        length -= done;
    }
    if (!breaks) return putBytes(output, data, length, alphabet);
    while (length != 0) {
        const std::uint32_t line = std::min(length, LINE_BYTES);
        output = putBytes(output, data, line, alphabet);
        output = put(output, LINE_END, sizeof LINE_END);
        data += line;
        length -= line;
    }
    return output;
}

} // namespace

Status base64Encode(char* output, std::uint32_t* inOutSize, const std::uint8_t* data, std::uint32_t dataLength,
                    const char* beginLine, const char* endLine, const char* versionText, const char* alphabet,
                    std::uint32_t flags)
{
    alphabet = alphabetOrDefault(alphabet);
    const Layout layout = makeLayout(beginLine, endLine, versionText, flags);
    const std::uint64_t size = textSize(layout, dataLength);
    if (size > UINT32_MAX) return TEXT_E_CONSISTENCY;
    if (*inOutSize < size) {
        *inOutSize = static_cast<std::uint32_t>(size);
        return STATUS_BUFFER_TOO_SMALL;
    }

    char checksum[BASE64_CHECKSUM_DIGITS];
    if (layout.checksum) {
        // An alphabet that holds a character twice cannot be read back: refuse it while nothing is written.
        const std::uint32_t crc = crc24(data, dataLength);
        putDigits(checksum, crc, alphabet);
        if (readChecksum(checksum, alphabet) != crc) return TEXT_E_CONSISTENCY;
    }

    char* end = output;
    if (layout.beginLine) {
        end = put(end, layout.beginLine, layout.beginLength);
        end = put(end, LINE_END, sizeof LINE_END);
    }
    if (layout.versionText) {
        end = put(end, VERSION_LABEL, VERSION_LABEL_LENGTH);
        end = put(end, layout.versionText, layout.versionLength);
        end = put(end, LINE_END, sizeof LINE_END);
        end = put(end, LINE_END, sizeof LINE_END);
    }
    end = putBody(end, data, dataLength, alphabet, layout.breaks);
    if (layout.checksum) {
        *end++ = '='; // whatever the alphabet's pad is: a reader finds the line only when that is "=" too
        end = put(end, checksum, sizeof checksum);
        end = put(end, LINE_END, sizeof LINE_END);
    }
    if (layout.beginLine) {
        end = put(end, layout.endLine, layout.endLength);
        end = put(end, LINE_END, sizeof LINE_END);
    }
    if (static_cast<std::uint32_t>(end - output) != size) return TEXT_E_CONSISTENCY;
    *inOutSize = static_cast<std::uint32_t>(size);
    return STATUS_OK;
}

} // namespace toolbelt
