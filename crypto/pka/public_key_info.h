// SubjectPublicKeyInfo (RFC 5280, section 4.1): reading its parts, and writing one around a key.
#pragma once

#include <cstdint>

#include "crypto/encoding/der.h"
#include "crypto/pka/key_bytes.h"
#include "crypto/pka/status.h"

namespace toolbelt {

// The content of an algorithm identifier's OBJECT IDENTIFIER.
struct OidOctets
{
    std::uint8_t length;
    std::uint8_t octets[15];
};

// Reads the algorithm identifier and the key's BIT STRING from the SEQUENCE's content; statuses are the DER reader's.
[[nodiscard]] Status readPublicKeyInfoParts(AlgorithmIdentifier& algorithm, DerBitString& key,
                                            const DerElement& sequence);

struct PublicKeyInfoParts
{
    AlgorithmIdentifier algorithm;
    DerBitString key; // its content is the key

    // Reads them; PKA_E_KEY when the element is no SEQUENCE or the key's code in OidTable is another.
    [[nodiscard]] Status read(const DerElement& element, std::uint32_t publicKey);
};

// One being written: open, then fill in the parameters element and the key.
struct PublicKeyInfoOutput
{
    std::uint8_t* parameters = nullptr; // where the whole parameters element goes
    std::uint8_t* key = nullptr;        // where the BIT STRING's content goes
    std::uint32_t totalLength = 0;

    // Lays out the elements. STATUS_BUFFER_TOO_SMALL with the size needed in *capacity, which is left alone otherwise;
    // PKA_E_HEADER.
    [[nodiscard]] Status open(std::uint8_t* output, std::uint32_t* capacity, const OidOctets& algorithm,
                              std::uint32_t parametersLength, std::uint32_t keyLength);
};

// Writes one whose parameters are a SEQUENCE of INTEGERs and whose key is an INTEGER (DSA: RFC 3279, section 2.3.2;
// Diffie-Hellman: section 2.3.3 and PKCS #3). *inOutSize is the capacity and becomes the length.
[[nodiscard]] Status writePublicKeyInfo(const OidOctets& algorithm, NumberList parameters, const BigNum& publicValue,
                                        std::uint8_t* output, std::uint32_t* inOutSize);

} // namespace toolbelt
