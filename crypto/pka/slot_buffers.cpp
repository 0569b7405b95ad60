// OCTET STRINGs in and out of the slots of key objects.
#include "crypto/pka/slot_buffers.h"

namespace toolbelt {

const std::uint8_t* octetStringContent(const std::uint8_t* input, std::uint32_t inputLength, std::uint32_t k)
{
    DerElement element;
    if (parseElement(element, input, inputLength, nullptr, nullptr, DER_OCTET_STRING) != STATUS_OK) return nullptr;
    return element.contentLength == k ? element.content : nullptr;
}

Status OctetStringOutput::open(std::uint8_t* output, std::uint32_t* outputLength, std::uint32_t k)
{
    const std::uint32_t total = prepareElement(element_, DER_OCTET_STRING, k);
    if (total == 0) return PKA_E_HEADER;
    if (!hasRoom(outputLength, total)) return STATUS_BUFFER_TOO_SMALL;
    output_ = output;
    outputLength_ = outputLength;
    return STATUS_OK;
}

Status OctetStringOutput::close()
{
    std::uint32_t offset = 0;
    if (placeElement(element_, output_, *outputLength_, &offset) == 0) return PKA_E_HEADER;
    *outputLength_ = offset;
    return STATUS_OK;
}

} // namespace toolbelt
