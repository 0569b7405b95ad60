// The routines that decode armoured or plain text into byte buffers and encode from data into them. Decoded bytes may
// be keys: every buffer is wiped when it is released.
#include <cstring>
#include <string_view>

#include "crypto/encoding/armour.h"

namespace toolbelt {
namespace {

using std::string_view;

// Asks for the decoded size. Nothing to decode is a failure here: only "too small" for no room at all tells a size.
bool askDecodedSize(string_view body, std::uint32_t& size)
{
    size = 0;
    const auto length = static_cast<std::uint32_t>(body.size());
    return base64Decode(nullptr, &size, body.data(), length) == STATUS_BUFFER_TOO_SMALL;
}

// Decodes into a new block of that size; the buffer is empty when it fails. Few pads can make less than the size asked
// for, and nothing at all counts as a failure too.
bool decodeInto(cByteBuffer& buffer, string_view body, std::uint32_t size)
{
    if (!buffer.allocate(size)) return false;
    const auto length = static_cast<std::uint32_t>(body.size());
    if (base64Decode(buffer.data(), &size, body.data(), length) != STATUS_OK || size == 0) {
        buffer.release();
        return false;
    }
    buffer.truncate(size);
    return true;
}

// An armoured text taken apart. rest is the line that follows the end line.
struct Parts
{
    string_view body;
    string_view rest;
    const char* header = nullptr;
};

bool takeApart(Parts& parts, string_view text, const char* beginLine, const char* endLine)
{
    const char* bodyStart = text.data();
    const char* restStart = text.data() + text.size();
    auto bodyLength = static_cast<std::uint32_t>(text.size());
    std::uint32_t restLength = 0;
    if (beginLine != nullptr) {
        if (findArmourBody(&bodyStart, &bodyLength, text.data(), bodyLength, beginLine, endLine, &parts.header,
                           &restStart, &restLength) != STATUS_OK)
            return false;
    } else if (endLine != nullptr) {
        if (const std::size_t end = text.find(endLine); end != string_view::npos) {
            const std::size_t rest = end + std::strlen(endLine);
            bodyLength = static_cast<std::uint32_t>(end);
            restStart = text.data() + rest;
            restLength = static_cast<std::uint32_t>(text.size() - rest);
        }
    }
    parts.body = string_view(bodyStart, bodyLength);
    parts.rest = string_view(restStart, restLength);
    const std::size_t lineEnd = parts.rest.find_first_of(string_view("\0\r\n", 3));
    if (lineEnd != string_view::npos) parts.rest.remove_suffix(parts.rest.size() - lineEnd);
    return true;
}

bool copyTo(cByteBuffer& buffer, string_view text)
{
    return buffer.append(text.data(), static_cast<std::uint32_t>(text.size()));
}

} // namespace

bool base64DecodeToBuffer(cByteBuffer& buffer, const char* text, std::uint32_t textLength)
{
    const string_view body(text, textLength);
    std::uint32_t size;
    return askDecodedSize(body, size) && decodeInto(buffer, body, size);
}

bool base64DecodeToBuffer(cByteBuffer& buffer, const char* text)
{
    if (text == nullptr) return false;
    const std::size_t length = std::strlen(text);
    return length <= UINT32_MAX && base64DecodeToBuffer(buffer, text, static_cast<std::uint32_t>(length));
}

bool decodeArmoured(cByteBuffer& buffer, const char* text, std::uint32_t textLength, const char* beginLine,
                    const char* endLine, cByteBuffer* headerLine, cByteBuffer* trailingText)
{
    if (text == nullptr) return false;
    const std::size_t length = textLength == TEXT_ZERO_TERMINATED ? std::strlen(text) : textLength;
    if (length > UINT32_MAX) return false;
    const string_view whole(text, length);

    Parts parts;
    std::uint32_t size;
    if (!takeApart(parts, whole, beginLine, endLine) || !askDecodedSize(parts.body, size)) return false;
    cByteBuffer decoded, header, trailing;
    if (!decodeInto(decoded, parts.body, size)) return false;
    if (headerLine != nullptr && parts.header != nullptr) {
        string_view line = whole;
        line.remove_prefix(static_cast<std::size_t>(parts.header - text));
        if (const std::size_t end = line.find('\n'); end != string_view::npos) line.remove_suffix(line.size() - end);
        if (!copyTo(header, line)) return false;
    }
    if (trailingText != nullptr && !copyTo(trailing, parts.rest)) return false;

    // Nothing can fail any more.
    buffer.swap(decoded);
    if (headerLine != nullptr) headerLine->swap(header);
    if (trailingText != nullptr) trailingText->swap(trailing);
    return true;
}

Status decodeArmouredInto(std::uint8_t* output, std::uint32_t* inOutSize, const char* text, std::uint32_t textLength,
                          const char* beginLine, const char* endLine)
{
    const char* body = nullptr;
    std::uint32_t length = 0;
    const Status status = findArmourBody(&body, &length, text, textLength, beginLine, endLine);
    return status != STATUS_OK ? status : base64Decode(output, inOutSize, body, length);
}

bool encodeToBuffer(cByteBuffer& buffer, const std::uint8_t* data, std::uint32_t dataLength, const char* beginLine,
                    const char* endLine, const char* versionText, const char* alphabet, std::uint32_t flags)
{
    std::uint32_t size = 0;
    if (base64Encode(nullptr, &size, data, dataLength, beginLine, endLine, versionText, alphabet, flags) !=
        STATUS_BUFFER_TOO_SMALL)
        return false;
    const std::uint32_t start = buffer.length();
    if (!buffer.grow(size)) return false;
    char* text = reinterpret_cast<char*>(buffer.data() + start);
    return base64Encode(text, &size, data, dataLength, beginLine, endLine, versionText, alphabet, flags) == STATUS_OK &&
           armouredEquals(text, size, data, dataLength, beginLine, endLine);
}

bool armouredEquals(const char* text, std::uint32_t textLength, const std::uint8_t* expected,
                    std::uint32_t expectedLength, const char* beginLine, const char* endLine)
{
    const char* body = text;
    std::uint32_t length = textLength;
    if (beginLine != nullptr && findArmourBody(&body, &length, text, textLength, beginLine, endLine) != STATUS_OK)
        return false;
    const string_view encoded(body, length);
    std::uint32_t size;
    cByteBuffer decoded;
    return askDecodedSize(encoded, size) && size == expectedLength && decodeInto(decoded, encoded, size) &&
           decoded.length() == expectedLength && std::memcmp(decoded.data(), expected, expectedLength) == 0;
}

} // namespace toolbelt
