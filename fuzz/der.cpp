// DER: every element agrees with the model, and what was read can be written again.
#include <cstdio>
#include <cstring>

#include "fuzz/der_model.h"
#include "fuzz/natural.h"

namespace toolbelt::fuzz {
namespace {

std::string oidText(const std::uint8_t* octets, std::uint32_t length)
{
    if (length == 0) return "";
    const int first = octets[0] < 40 ? 0 : octets[0] < 80 ? 1 : 2;
    std::string text = std::to_string(first) + "." + std::to_string(octets[0] - 40 * first);
    std::uint32_t arc = 0;
    for (std::uint32_t i = 1; i < length; ++i) {
        arc = arc << 7 | (octets[i] & 0x7F);
        if ((octets[i] & 0x80) != 0) continue;
        if (text.size() >= 246) return "";
        text += "." + std::to_string(static_cast<std::int32_t>(arc));
        arc = 0;
    }
    return length > 1 && (octets[length - 1] & 0x80) != 0 ? "" : text;
}

void checkTime(const DerElement& element)
{
    DerTime time;
    const std::uint32_t wanted = element.tag == DER_UTC_TIME ? 13 : 15;
    const std::string text(reinterpret_cast<const char*>(element.content), element.contentLength);
    const bool digits = text.size() == wanted && text.find_first_not_of("0123456789") == wanted - 1;
    const Status expected = text.size() != wanted           ? DER_E_LENGTH
                            : !digits || text.back() != 'Z' ? DER_E_MALFORMED
                                                            : STATUS_OK;
    require(readTime(time, element) == expected, "a time's status");
    if (expected != STATUS_OK) return;
    char written[32];
    std::snprintf(written, sizeof written, "%04d%02d%02d%02d%02d%02dZ", time.year, time.month, time.day, time.hour,
                  time.minute, time.second);
    require(text == written + (wanted == 13 ? 2 : 0), "a time reads as it is written");
    require(wanted == 15 || (time.year >= 1950 && time.year <= 2049), "a century");
}

void checkReaders(const DerElement& element, std::uint32_t available)
{
    const std::uint8_t* const content = element.content;
    const std::uint32_t length = element.contentLength;
    std::uint32_t value = 0, first = 0;
    for (std::uint32_t i = 0; i < length && i < 4; ++i) first = first << 8 | content[i];
    require(readSmallInteger(element, &value) == (length > 4 ? STATUS_BUFFER_TOO_SMALL : STATUS_OK) && value == first,
            "a small integer");
    const std::uint8_t* at = element.start;
    BigNum number;
    const Status status = readBigNum(number, &at, &available);
    require((status == STATUS_OK) == ((element.tag & 0x1F) == DER_INTEGER && length != 0), "a number is one");
    if (status == STATUS_OK)
        require(valueOf(number) == trimmed(Bytes(content, content + length)) && at == content + length, "its octets");
    DerBitString bits;
    require((readBitString(bits, element.start, element.totalLength) == STATUS_OK) == (element.tag == DER_BIT_STRING),
            "a BIT STRING is one");
    if (element.tag == DER_BIT_STRING) {
        const std::uint32_t skipped = length != 0 && content[0] < 8;
        require(bits.element.content == content + skipped && bits.element.contentLength == length - skipped &&
                    bits.unusedBits == (skipped ? content[0] : 0u),
                "unused bits");
    }
    OidRecord oid;
    const std::string text = oidText(content, length);
    const Status expected = element.tag != DER_OID ? DER_E_MALFORMED : text.empty() ? DER_E_LIMIT : STATUS_OK;
    require(readOid(oid, element.start, element.totalLength) == expected, "an identifier's status");
    require(expected != STATUS_OK || text == oid.text, "an identifier's text");
    checkTime(element);
}

void writeAgain(const DerElement& element)
{
    DerElement copy;
    Bytes buffer(prepareElement(copy, element.tag, element.contentLength));
    require(placeElement(copy, buffer.data(), sizeOf(buffer), nullptr) != 0 &&
                setContent(copy, element.content, element.contentLength) == STATUS_OK,
            "an element is written");
    const Shape shape = shapeOf(buffer.data(), sizeOf(buffer));
    require(shape.status == STATUS_OK && shape.content == element.contentLength && shape.total() == buffer.size() &&
                shape.header <= element.totalLength - element.contentLength,
            "its header is right and the shortest");
}

void readSequence(const std::uint8_t* data, std::uint32_t available)
{
    AlgorithmIdentifier algorithm;
    NameList name;
    DerValidity validity;
    if (readAlgorithmIdentifier(algorithm, data, available) == STATUS_OK)
        require(algorithm.row && lookupOid(nullptr, 0, algorithm.oid.text, nullptr) != 0, "a known algorithm");
    if (readName(name, data, available) != STATUS_OK) require(!name.head, "a failed name is empty");
    if (readValidity(validity, data, available) == STATUS_OK) isTimeValid(validity, 1);
}

void walk(const std::uint8_t* data, std::uint32_t available, int depth)
{
    for (;;) {
        const Shape shape = shapeOf(data, available);
        DerElement element;
        const std::uint8_t* rest = nullptr;
        std::uint32_t restLength = 0;
        require(parseElement(element, data, available, &rest, &restLength) == shape.status, "an element's status");
        if (shape.status != STATUS_OK) {
            require(!element.start && !element.content && !rest, "a failed element is empty");
            return;
        }
        require(element.start == data && element.tag == data[0] && element.content == data + shape.header &&
                    element.contentLength == shape.content && element.totalLength == shape.total() &&
                    element.indefinite == shape.indefinite && rest == data + shape.total() &&
                    restLength == available - shape.total(),
                "an element is where its octets are");
        const std::int32_t other = (data[0] & 0x1F) ^ 1;
        const bool isOther = other == data[0];
        require(parseElement(element, data, available, nullptr, nullptr, other) == (isOther ? STATUS_OK : DER_E_TAG) &&
                    parseElement(element, data, available, nullptr, nullptr, data[0] & 0x1F) == STATUS_OK,
                "an expected tag");
        checkReaders(element, available);
        if (!shape.indefinite) writeAgain(element);
        if ((data[0] & 0x1F) == DER_SEQUENCE) readSequence(data, available);
        if ((data[0] & 0x20) != 0 && depth < 12) walk(element.content, element.contentLength, depth + 1);
        data = rest;
        available = restLength;
    }
}

const Target target("der", [](Input input) {
    const Bytes bytes = input.take(1024);
    walk(addressOf(bytes), sizeOf(bytes), 0);
});

} // namespace
} // namespace toolbelt::fuzz
