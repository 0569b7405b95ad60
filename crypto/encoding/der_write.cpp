// Writing DER (X.690): sizes first, then headers laid into the caller's buffer, contents filled in behind them.
//
// Lengths are definite and as short as they can be.
#include "crypto/encoding/der.h"

#include <algorithm>
#include <cstring>

#include "crypto/base/bytes.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t SHORT_LENGTH_LIMIT = 0x80;

// The content of an element that placeElement placed in the caller's buffer, which is not constant.
std::uint8_t* placedContent(const DerElement& element)
{
    return const_cast<std::uint8_t*>(element.content);
}

} // namespace

std::uint32_t headerLength(std::uint32_t contentLength, std::uint32_t tag, std::uint8_t* output)
{
    std::uint32_t lengthOctets = 0;
    if (contentLength >= SHORT_LENGTH_LIMIT)
        for (std::uint32_t left = contentLength; left != 0; left >>= 8) ++lengthOctets;
    if (output) {
        output[0] = static_cast<std::uint8_t>(tag);
        output[1] = static_cast<std::uint8_t>(lengthOctets ? 0x80 | lengthOctets : contentLength);
        for (std::uint32_t i = 0; i < lengthOctets; ++i)
            output[2 + i] = static_cast<std::uint8_t>(contentLength >> 8 * (lengthOctets - 1 - i));
    }
    return 2 + lengthOctets;
}

std::uint32_t prepareElement(DerElement& element, std::uint32_t tag, std::uint32_t contentLength)
{
    element = {};
    element.tag = tag;
    element.contentLength = contentLength;
    const std::uint32_t header = headerLength(contentLength, tag);
    if (contentLength <= UINT32_MAX - header) element.totalLength = header + contentLength;
    return element.totalLength;
}

std::uint32_t placeElement(DerElement& element, std::uint8_t* buffer, std::uint32_t capacity, std::uint32_t* offset)
{
    const std::uint32_t header = headerLength(element.contentLength, element.tag);
    const std::uint32_t total = element.totalLength;
    // Only what prepareElement measured is placed: a parsed element may have a longer header than it would be written
    // with.
    if (buffer == nullptr || total < header || total - header != element.contentLength) return 0;
    if (offset ? *offset > capacity || total > capacity - *offset : total != capacity) return 0;

    std::uint8_t* const start = offset ? buffer + *offset : buffer;
    if (offset) *offset += total;
    headerLength(element.contentLength, element.tag, start);
    element.start = start;
    element.content = start + header;
    return header;
}

std::uint32_t prepareBitString(DerElement& element, std::uint32_t contentLength)
{
    if (contentLength == UINT32_MAX) {
        element = {};
        return 0;
    }
    return prepareElement(element, DER_BIT_STRING, contentLength + 1);
}

std::uint32_t placeBitString(DerElement& element, std::uint8_t* buffer, std::uint32_t capacity, std::uint32_t* offset)
{
    if (element.contentLength == 0) return 0;
    const std::uint32_t header = placeElement(element, buffer, capacity, offset);
    if (header == 0) return 0;
    *placedContent(element) = 0;
    ++element.content;
    --element.contentLength;
    return header;
}

Status setContent(DerElement& element, const std::uint8_t* bytes, std::uint32_t length)
{
    if (element.content == nullptr || length != element.contentLength) return DER_E_LIMIT;
    if (length != 0) std::memcpy(placedContent(element), bytes, length);
    return STATUS_OK;
}

std::uint32_t prepareSmallInteger(DerSmallInteger& integer, std::uint32_t value)
{
    std::uint8_t octets[4];
    store32be(octets, value);
    std::uint32_t leading = 0;
    while (leading < 3 && octets[leading] == 0) ++leading;
    std::memcpy(integer.octets, octets + leading, 4 - leading);
    return prepareElement(integer.element, DER_INTEGER, 4 - leading);
}

Status writeSmallInteger(DerSmallInteger& integer)
{
    if (integer.element.contentLength > sizeof integer.octets) return DER_E_LIMIT;
    return setContent(integer.element, integer.octets, integer.element.contentLength);
}

std::uint32_t prepareBigNum(DerElement& element, const BigNum& number, std::uint32_t minimumLength)
{
    return prepareElement(element, DER_INTEGER, std::max(bnDerLength(number), minimumLength));
}

Status writeBigNum(DerElement& element, const BigNum& number)
{
    if (element.content == nullptr || element.contentLength < bnDerLength(number)) return DER_E_LIMIT;
    bnExport(placedContent(element), element.contentLength, number);
    return STATUS_OK;
}

} // namespace toolbelt
