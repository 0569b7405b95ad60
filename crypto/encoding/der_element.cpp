// Parsing of single DER elements (X.690): header, bit strings and integers.
//
// A length that the data cannot hold is found by comparing it with what remains, never by adding to it, so nothing
// overflows in 32 bits. An indefinite element is measured by parsing the elements inside it; every octet is looked at
// once, however deep it lies.
#include "crypto/encoding/der.h"

#include <algorithm>

namespace toolbelt {
namespace {

constexpr std::uint32_t HEADER_MIN = 2; // identifier and first length octet
constexpr std::uint8_t LENGTH_INDEFINITE = 0x80;
constexpr std::uint8_t LENGTH_LONGEST = 0x84; // four length octets follow
constexpr std::uint32_t TAG_NUMBER_MASK = 0x1F;

// depth counts the indefinite elements around this one.
Status parseAt(DerElement& element, const std::uint8_t* data, std::uint32_t available, std::uint32_t depth)
{
    element = {};
    if (available < HEADER_MIN) return DER_E_LENGTH;
    const std::uint8_t lengthOctet = data[1];
    if (lengthOctet > LENGTH_LONGEST) return DER_E_MALFORMED;

    std::uint32_t header = HEADER_MIN;
    std::uint32_t content = 0;
    if (lengthOctet == LENGTH_INDEFINITE) {
        if (depth == DER_MAX_INDEFINITE_DEPTH) return DER_E_MALFORMED;
        // content + header <= available: an element inside is never longer than what was left for it.
        DerElement inner;
        do {
            const Status status = parseAt(inner, data + header + content, available - header - content, depth + 1);
            if (status != STATUS_OK) return status;
            content += inner.totalLength;
        } while (inner.tag != 0);
    } else if (lengthOctet < LENGTH_INDEFINITE) {
        content = lengthOctet;
    } else {
        header += lengthOctet & 0x7Fu;
        if (header > available) return DER_E_LENGTH;
        for (std::uint32_t i = HEADER_MIN; i < header; ++i) content = content << 8 | data[i];
    }
    if (content > available - header) return DER_E_LENGTH;

    element.tag = data[0];
    element.contentLength = content;
    element.content = data + header;
    element.start = data;
    element.totalLength = header + content;
    element.indefinite = lengthOctet == LENGTH_INDEFINITE;
    return STATUS_OK;
}

} // namespace

Status parseElement(DerElement& element, const std::uint8_t* data, std::uint32_t available, const std::uint8_t** rest,
                    std::uint32_t* restLength, std::int32_t expectedTag)
{
    if (data == nullptr) {
        element = {};
        return DER_E_MALFORMED;
    }
    const Status status = parseAt(element, data, available, 0);
    if (status != STATUS_OK) return status;
    if (rest) *rest = data + element.totalLength;
    if (restLength) *restLength = available - element.totalLength;

    if (expectedTag == DER_ANY) return STATUS_OK;
    const auto expected = static_cast<std::uint32_t>(expectedTag);
    return element.tag == expected || (element.tag & TAG_NUMBER_MASK) == expected ? STATUS_OK : DER_E_TAG;
}

bool isContextTag(const DerElement& element)
{
    return (element.tag & 0x80) != 0;
}

std::int32_t contextTagNumber(const DerElement& element)
{
    return isContextTag(element) ? static_cast<std::int32_t>(element.tag & 0x0F) : -1;
}

Status readBitString(DerBitString& bits, const std::uint8_t* data, std::uint32_t available, const std::uint8_t** rest,
                     std::uint32_t* restLength)
{
    DerElement& element = bits.element;
    bits.unusedBits = 0;
    const Status status = parseElement(element, data, available);
    if (status != STATUS_OK) return status;
    if (element.tag != DER_BIT_STRING) return DER_E_MALFORMED;
    if (rest) *rest = data + element.totalLength;
    if (restLength) *restLength = available - element.totalLength;

    // Some writers leave the octet out; one that cannot be a count of unused bits is taken for the first of the
    // content.
    if (element.contentLength > 0 && element.content[0] < 8) {
        bits.unusedBits = element.content[0];
        ++element.content;
        --element.contentLength;
    }
    return STATUS_OK;
}

Status readInteger(DerElement& element, const std::uint8_t* data, std::uint32_t available, const std::uint8_t** rest,
                   std::uint32_t* restLength)
{
    return parseElement(element, data, available, rest, restLength, DER_INTEGER);
}

Status readSmallInteger(const DerElement& element, std::uint32_t* value)
{
    const std::uint32_t octets = std::min<std::uint32_t>(element.contentLength, sizeof *value);
    std::uint32_t number = 0;
    for (std::uint32_t i = 0; i < octets; ++i) number = number << 8 | element.content[i];
    *value = number;
    return element.contentLength > octets ? STATUS_BUFFER_TOO_SMALL : STATUS_OK;
}

Status readBigNum(BigNum& number, const std::uint8_t** data, std::uint32_t* available)
{
    DerElement element;
    Status status = readInteger(element, *data, *available);
    if (status != STATUS_OK) return status;
    if (element.contentLength == 0) return DER_E_MALFORMED; // an INTEGER has at least one octet
    status = bnImport(number, element.content, element.contentLength);
    if (status != STATUS_OK) return status;
    *data += element.totalLength;
    *available -= element.totalLength;
    return STATUS_OK;
}

} // namespace toolbelt
