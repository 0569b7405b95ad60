// Pairs of numbers to bytes and back.
#include "crypto/pka/number_pair.h"

#include "crypto/encoding/der_cursor.h"
#include "crypto/pka/key_bytes.h"

namespace toolbelt {
namespace {

bool readDer(NumberPair& pair, DerCursor input)
{
    DerElement element;
    if (takeElement(element, input) != STATUS_OK) return false;
    if (element.tag == DER_OCTET_STRING || element.tag == DER_BIT_STRING) {
        DerBitString bits;
        if (element.tag == DER_BIT_STRING) {
            if (readBitString(bits, element.start, element.totalLength) != STATUS_OK) return false;
            element = bits.element;
        }
        input = contentOf(element);
        if (takeElement(element, input) != STATUS_OK || input.available != 0) return false;
    }
    return isSequence(element) && readIntegers({&pair.first, &pair.second}, element.content, element.contentLength);
}

} // namespace

bool readPair(NumberPair& pair, PairForm form, const std::uint8_t* bytes, std::uint32_t length)
{
    if (form == PairForm::der) return readDer(pair, {bytes, length});
    std::uint32_t offset = 0;
    return readPrefixed({&pair.first, &pair.second}, bytes, length, offset);
}

Status writePair(const NumberPair& pair, PairForm form, std::uint8_t* output, std::uint32_t* outputLength)
{
    const NumberList numbers = {&pair.first, &pair.second};
    return form == PairForm::der ? writeSequence(false, numbers, output, outputLength)
                                 : writePrefixed(numbers, output, outputLength);
}

std::uint32_t pairCapacity(PairForm form, std::uint32_t keyBits, std::uint32_t numberBits)
{
    if (form == PairForm::prefixed) return 2 * ((keyBits + 7) / 8 + 2);
    const std::uint32_t content = numberBits / 8 + 1;
    const std::uint32_t both = 2 * (headerLength(content, DER_INTEGER) + content);
    return headerLength(both, DER_CONSTRUCTED_SEQUENCE) + both;
}

} // namespace toolbelt
