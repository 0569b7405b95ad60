// cPKA: any public or private key, without knowing its algorithm. Key objects come from the factories of each
// algorithm's header and from the key readers; `delete` releases them, their numbers wiped. One caller at a time uses
// an object.
//
// Output operations read *outputLength as the capacity and write the length produced; when the capacity is too small
// they store the needed length and return STATUS_BUFFER_TOO_SMALL. An operation that a class does not offer answers
// PKA_E_NOT_OFFERED and writes nothing. "Prefixed" is the prefixed form of bignum.h (k + 2 bytes for a key of k bytes,
// zeros behind a shorter number); "DER" is an OCTET STRING of k content bytes. So it is for RSA; DSA and
// ElGamal carry pairs of numbers instead (dsa.h, elgamal.h).
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/base/heap.h"
#include "crypto/pka/status.h"

namespace toolbelt {

// OpenPGP public-key algorithm numbers (RFC 4880, section 9.1).
inline constexpr std::uint32_t PKA_NONE = 0;
inline constexpr std::uint32_t PKA_RSA = 1;
inline constexpr std::uint32_t PKA_DSA = 17;
inline constexpr std::uint32_t PKA_ELGAMAL = 20;

// Keys with a modulus or prime of more bits are refused at import, so that hostile keys cannot demand unbounded work.
inline constexpr std::uint32_t PKA_MAX_KEY_BITS = 16384;

class TB_API cPKA : public HeapObject
{
public:
    // Size k of the modulus or prime in bytes.
    virtual std::int32_t keyLength();
    // Largest input block in bytes.
    virtual std::int32_t maxInputLength();
    // Public operation (raw encryption) on k bytes, to prefixed output.
    virtual Status encryptPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                                   std::uint32_t inputLength);
    // The class's raw operation on k bytes, to DER output.
    virtual Status rawToDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                            std::uint32_t inputLength);
    // Verification of a signature against a digest: 0, or PKA_E_FAILED when it does not verify. A DER signature may be
    // a BIT STRING as well; what cannot be read as an element gives the DER reader's status.
    virtual Status verifyPrefixed(const std::uint8_t* signature, std::uint32_t signatureLength,
                                  const std::uint8_t* digest, std::uint32_t digestLength);
    virtual Status verifyDer(const std::uint8_t* signature, std::uint32_t signatureLength, const std::uint8_t* digest,
                             std::uint32_t digestLength);
    // Public and private (raw decryption) operation from prefixed input to k bytes.
    virtual Status publicFromPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                                      std::uint32_t inputLength);
    virtual Status privateFromPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                                       std::uint32_t inputLength);
    // The same from DER input.
    virtual Status publicFromDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                                 std::uint32_t inputLength);
    virtual Status privateFromDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                                  std::uint32_t inputLength);
    // Signatures over a digest or a prepared block.
    virtual Status signPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                                std::uint32_t inputLength);
    virtual Status signDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                           std::uint32_t inputLength);
    virtual ~cPKA();
    // The key as prefixed numbers, in its DER form, and as the binary ssh-rsa blob.
    virtual Status exportNumbers(std::uint8_t* output, std::uint32_t* outputLength);
    virtual Status exportDer(std::uint8_t* output, std::uint32_t* outputLength);
    virtual Status exportSsh(std::uint8_t* output, std::uint32_t* outputLength);
    // A new public-key object of the same algorithm from a private key; the caller deletes it. *key is left alone on
    // failure.
    virtual Status makePublic(cPKA** key);

    // The OpenPGP number of the class, PKA_NONE while no key is held.
    std::uint32_t algorithm() const { return algorithm_; }

protected:
    std::uint32_t algorithm_ = PKA_NONE;
};

} // namespace toolbelt
