// Object identifiers and algorithm identifiers (X.690 8.19, RFC 5280 4.1.1.2).
#include "crypto/encoding/der.h"

#include <charconv>
#include <cstring>
#include <utility>

#include "crypto/base/heap.h"

namespace toolbelt {
namespace {

// No component is started once the text holds this many characters.
constexpr std::ptrdiff_t OID_TEXT_FULL = 246;

void clear(OidRecord& oid)
{
    oid.element = {};
    heap::release(std::exchange(oid.text, nullptr));
}

} // namespace

OidRecord::~OidRecord()
{
    heap::release(text);
}

Status formatOid(char (&text)[DER_OID_TEXT_SIZE], const std::uint8_t* octets, std::uint32_t length)
{
    text[0] = '\0';
    if (length == 0) return DER_E_LIMIT;
    char output[DER_OID_TEXT_SIZE];
    char* const last = output + sizeof output - 1; // keeps room for the terminator
    const int leadingArc = octets[0] < 40 ? 0 : octets[0] < 80 ? 1 : 2;
    char* end = std::to_chars(output, last, leadingArc).ptr;
    *end++ = '.';
    end = std::to_chars(end, last, octets[0] - 40 * leadingArc).ptr;

    for (std::uint32_t i = 1; i < length; ++i) {
        // The accumulator has 32 bits and wraps; it is written as a signed number, so an arc of 2^31 shows as negative.
        std::uint32_t arc = octets[i] & 0x7Fu;
        while (octets[i] & 0x80) {
            if (++i == length) return DER_E_LIMIT; // the last component never ends
            arc = arc << 7 | (octets[i] & 0x7Fu);
        }
        if (end - output >= OID_TEXT_FULL) return DER_E_LIMIT;
        *end++ = '.';
        const std::to_chars_result written = std::to_chars(end, last, static_cast<std::int32_t>(arc));
        if (written.ec != std::errc()) return DER_E_LIMIT; // the text does not fit
        end = written.ptr;
    }
    *end = '\0';
    std::memcpy(text, output, static_cast<std::size_t>(end - output) + 1);
    return STATUS_OK;
}

Status readOid(OidRecord& oid, const std::uint8_t* data, std::uint32_t available, const std::uint8_t** rest,
               std::uint32_t* restLength)
{
    clear(oid);
    Status status = parseElement(oid.element, data, available);
    if (status != STATUS_OK) return status;
    if (oid.element.tag != DER_OID) return DER_E_MALFORMED;

    char text[DER_OID_TEXT_SIZE];
    status = formatOid(text, oid.element.content, oid.element.contentLength);
    if (status != STATUS_OK) return status;
    const std::size_t size = std::strlen(text) + 1;
    oid.text = static_cast<char*>(heap::allocate(size));
    if (oid.text == nullptr) return DER_E_MEMORY;
    std::memcpy(oid.text, text, size);
    if (rest) *rest = data + oid.element.totalLength;
    if (restLength) *restLength = available - oid.element.totalLength;
    return STATUS_OK;
}

Status readAlgorithmIdentifier(AlgorithmIdentifier& algorithm, const std::uint8_t* data, std::uint32_t available,
                               const std::uint8_t** rest, std::uint32_t* restLength)
{
    clear(algorithm.oid);
    algorithm.parameters = {};
    algorithm.row = nullptr;
    DerElement& outer = algorithm.element;
    Status status = parseElement(outer, data, available, nullptr, nullptr, DER_SEQUENCE);
    const std::uint8_t* next = nullptr;
    std::uint32_t remaining = 0;
    if (status == STATUS_OK) status = readOid(algorithm.oid, outer.content, outer.contentLength, &next, &remaining);
    if (status != STATUS_OK) return status;
    const OidRow* row = nullptr;
    if (lookupOid(nullptr, 0, algorithm.oid.text, &row) == 0) return DER_E_UNKNOWN_ALGORITHM;

    DerElement parameters;
    if (remaining != 0) {
        status = parseElement(parameters, next, remaining, nullptr, &remaining);
        if (status != STATUS_OK) return status;
        if (remaining != 0) return DER_E_LENGTH;
    }
    algorithm.parameters = parameters;
    algorithm.row = row;
    if (rest) *rest = data + outer.totalLength;
    if (restLength) *restLength = available - outer.totalLength;
    return STATUS_OK;
}

} // namespace toolbelt
