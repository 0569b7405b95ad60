// Lists of numbers as bytes: blobs of prefixed numbers (RFC 4880) and SEQUENCEs of INTEGERs.
#include "crypto/pka/key_bytes.h"

#include "crypto/pka/pka.h"
#include "crypto/pka/slot_buffers.h"

namespace toolbelt {

bool isTooLong(const BigNum& number)
{
    return bnBitLength(number) > PKA_MAX_KEY_BITS;
}

bool isWithin(const BigNum& number, std::uint64_t least, const BigNum& limit)
{
    return bnCompareWord(number, least) >= 0 && bnCompare(number, limit) < 0;
}

bool readPrefixed(std::initializer_list<BigNum*> numbers, const std::uint8_t* blob, std::uint32_t length,
                  std::uint32_t& offset)
{
    for (BigNum* number : numbers)
        if (!bnImportPrefixedAt(*number, blob, length, offset)) return false;
    return true;
}

bool readIntegers(std::initializer_list<BigNum*> numbers, const std::uint8_t* data, std::uint32_t available)
{
    for (BigNum* number : numbers)
        if (readBigNum(*number, &data, &available) != STATUS_OK) return false;
    return available == 0;
}

bool isSequence(const DerElement& element)
{
    return (element.tag & 0x1F) == DER_SEQUENCE;
}

bool readVersionedSequence(std::initializer_list<BigNum*> numbers, const DerElement& sequence)
{
    DerElement element;
    const std::uint8_t* rest = nullptr;
    std::uint32_t restLength = 0, version = 0;
    return isSequence(sequence) &&
           readInteger(element, sequence.content, sequence.contentLength, &rest, &restLength) == STATUS_OK &&
           element.contentLength != 0 && readSmallInteger(element, &version) == STATUS_OK && version == 0 &&
           readIntegers(numbers, rest, restLength);
}

Status writePrefixed(NumberList numbers, std::uint8_t* output, std::uint32_t* inOutSize)
{
    std::uint32_t needed = 0;
    for (const BigNum* number : numbers) needed += bnPrefixedSize(*number);
    if (!hasRoom(inOutSize, needed)) return STATUS_BUFFER_TOO_SMALL;
    std::uint32_t offset = 0;
    for (const BigNum* number : numbers)
        if (!bnExportPrefixedAt(output, needed, offset, *number)) return PKA_E_RANGE;
    *inOutSize = needed;
    return STATUS_OK;
}

Status writeSequence(bool withVersion, NumberList numbers, std::uint8_t* output, std::uint32_t* inOutSize)
{
    DerSmallInteger version;
    DerElement sequence;
    std::uint32_t contentLength = withVersion ? prepareSmallInteger(version, 0) : 0;
    for (const BigNum* number : numbers) {
        DerElement element;
        contentLength += prepareBigNum(element, *number);
    }
    const std::uint32_t total = prepareElement(sequence, DER_CONSTRUCTED_SEQUENCE, contentLength);
    if (total == 0) return PKA_E_HEADER;
    if (!hasRoom(inOutSize, total)) return STATUS_BUFFER_TOO_SMALL;

    std::uint32_t end = 0; // the SEQUENCE's: its offset moves behind the content at once
    std::uint32_t offset = placeElement(sequence, output, total, &end);
    if (offset == 0) return PKA_E_HEADER;
    if (withVersion &&
        (placeElement(version.element, output, total, &offset) == 0 || writeSmallInteger(version) != STATUS_OK))
        return PKA_E_HEADER;
    for (const BigNum* number : numbers) {
        DerElement element;
        if (prepareBigNum(element, *number) == 0 || placeElement(element, output, total, &offset) == 0 ||
            writeBigNum(element, *number) != STATUS_OK)
            return PKA_E_HEADER;
    }
    *inOutSize = total;
    return STATUS_OK;
}

} // namespace toolbelt
