// What the slots of the key objects share: capacity checks, and DER OCTET STRINGs of a stated length.
#pragma once

#include <cstdint>

#include "crypto/encoding/der.h"
#include "crypto/pka/status.h"

namespace toolbelt {

// True when the capacity suffices; otherwise the needed length is stored in its place.
inline bool hasRoom(std::uint32_t* capacity, std::uint32_t needed)
{
    if (*capacity >= needed) return true;
    *capacity = needed;
    return false;
}

// What a slot of DSA or ElGamal answers for the status of its core: a capacity that is too small and the codes in
// `passedOn` as they are, any other failure as one.
inline Status outcome(Status core, Status failure, Status passedOn = STATUS_BUFFER_TOO_SMALL)
{
    return core == STATUS_OK || core == STATUS_BUFFER_TOO_SMALL || core == passedOn ? core : failure;
}

// The content of an OCTET STRING that holds exactly k bytes; null when the input is anything else. What follows the
// element is not looked at.
const std::uint8_t* octetStringContent(const std::uint8_t* input, std::uint32_t inputLength, std::uint32_t k);

// An OCTET STRING of k bytes being built in a caller's buffer: open, write the content, close.
class OctetStringOutput
{
public:
    // Stores the needed length and answers STATUS_BUFFER_TOO_SMALL when *outputLength does not suffice. Writes nothing
    // into the buffer, so that a failure up to close leaves no header without a content.
    [[nodiscard]] Status open(std::uint8_t* output, std::uint32_t* outputLength, std::uint32_t k);
    // Where the k bytes go.
    std::uint8_t* content() const { return output_ + (element_.totalLength - element_.contentLength); }
    // Writes the header and stores the length produced.
    [[nodiscard]] Status close();

private:
    DerElement element_;
    std::uint8_t* output_ = nullptr;
    std::uint32_t* outputLength_ = nullptr;
};

} // namespace toolbelt
