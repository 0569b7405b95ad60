// ElGamal key objects: cPublicElgamal and cPrivateElgamal over the key records of elgamal_key.h, and their factories.
//
// Ciphertexts and signatures are pairs of numbers (number_pair.h), prefixed or DER. A capacity that is too small is
// replaced by the one demanded. Encryption answers PKA_E_RANDOM when the random pool has run dry; any other failure is
// PKA_E_RAW_FAILED, of verification PKA_E_FAILED, and the length is left alone.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/pka/elgamal_key.h"
#include "crypto/pka/pka.h"

namespace toolbelt {

// Both classes are made by the factories below, and used through cPKA. A program may ask an object for its record when
// algorithm() says which class it has.
class cPublicElgamal : public cPKA
{
public:
    // Takes ownership of the record.
    explicit cPublicElgamal(ElgamalKey* record);
    std::int32_t keyLength() override;
    // Both encrypt; the message is a number of any length.
    Status encryptPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                           std::uint32_t inputLength) override;
    Status rawToDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                    std::uint32_t inputLength) override;
    Status verifyPrefixed(const std::uint8_t* signature, std::uint32_t signatureLength, const std::uint8_t* digest,
                          std::uint32_t digestLength) override;
    Status verifyDer(const std::uint8_t* signature, std::uint32_t signatureLength, const std::uint8_t* digest,
                     std::uint32_t digestLength) override;
    ~cPublicElgamal() override;
    Status exportDer(std::uint8_t* output, std::uint32_t* outputLength) override;

    const ElgamalKey& record() const { return *record_; }

private:
    ElgamalKey* record_;
    std::int32_t keyLength_;
};

class cPrivateElgamal : public cPKA
{
public:
    // Takes ownership of the record.
    explicit cPrivateElgamal(ElgamalKey* record);
    std::int32_t keyLength() override;
    Status privateFromPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                               std::uint32_t inputLength) override;
    Status signPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                        std::uint32_t inputLength) override;
    ~cPrivateElgamal() override;
    Status exportDer(std::uint8_t* output, std::uint32_t* outputLength) override;
    // PKA_E_OBJECT when the record lacks the private mark or the key cannot be made.
    Status makePublic(cPKA** key) override;

    const ElgamalKey& record() const { return *record_; }

private:
    ElgamalKey* record_;
    std::int32_t keyLength_;
};

// The object over a record, which it owns from then on; null, and the record freed, when memory has run out. A null
// record gives null.
[[nodiscard]] TB_API cPKA* newPublicElgamal(ElgamalOwner record);
[[nodiscard]] TB_API cPKA* newPrivateElgamal(ElgamalOwner record);
// From key bytes: null when the blob cannot be read. The private blob holds p, g, y and x.
[[nodiscard]] TB_API cPKA* newPublicElgamal(const std::uint8_t* blob, std::uint32_t length);
[[nodiscard]] TB_API cPKA* newPrivateElgamal(const std::uint8_t* blob, std::uint32_t length);
// From a parsed DER element, a SubjectPublicKeyInfo or the library's private form: 0 and the object, or PKA_E_IMPORT,
// and *key left alone.
[[nodiscard]] TB_API Status newPublicElgamalFromDer(cPKA** key, const DerElement& sequence);
[[nodiscard]] TB_API Status newPrivateElgamalFromDer(cPKA** key, const DerElement& sequence);

} // namespace toolbelt
