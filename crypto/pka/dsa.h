// DSA key objects: cPublicDSA and cPrivateDSA over the key records of dsa_key.h, and their factories.
//
// Signatures are pairs of numbers (number_pair.h), prefixed or DER. Signing answers PKA_E_RAW_FAILED whatever has gone
// wrong, and verification PKA_E_FAILED, but for a capacity that is too small, which is replaced by the one demanded.
// On any other failure the length is left alone.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/pka/dsa_key.h"
#include "crypto/pka/pka.h"

namespace toolbelt {

// Both classes are made by the factories below, and used through cPKA. A program may ask an object for its record when
// algorithm() says which class it has.
class cPublicDSA : public cPKA
{
public:
    // Takes ownership of the record.
    explicit cPublicDSA(DsaKey* record);
    std::int32_t keyLength() override;
    std::int32_t maxInputLength() override;
    Status verifyPrefixed(const std::uint8_t* signature, std::uint32_t signatureLength, const std::uint8_t* digest,
                          std::uint32_t digestLength) override;
    Status verifyDer(const std::uint8_t* signature, std::uint32_t signatureLength, const std::uint8_t* digest,
                     std::uint32_t digestLength) override;
    ~cPublicDSA() override;
    Status exportDer(std::uint8_t* output, std::uint32_t* outputLength) override;

    const DsaKey& record() const { return *record_; }

private:
    DsaKey* record_;
    std::int32_t keyLength_;
};

class cPrivateDSA : public cPKA
{
public:
    // Takes ownership of the record.
    explicit cPrivateDSA(DsaKey* record);
    std::int32_t keyLength() override;
    std::int32_t maxInputLength() override;
    Status signPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                        std::uint32_t inputLength) override;
    Status signDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                   std::uint32_t inputLength) override;
    ~cPrivateDSA() override;
    Status exportDer(std::uint8_t* output, std::uint32_t* outputLength) override;
    // PKA_E_HEADER when the record lacks the private mark, PKA_E_OBJECT when the key cannot be made.
    Status makePublic(cPKA** key) override;

    const DsaKey& record() const { return *record_; }

private:
    DsaKey* record_;
    std::int32_t keyLength_;
};

// The object over a record, which it owns from then on; null, and the record freed, when memory has run out. A null
// record gives null.
[[nodiscard]] TB_API cPKA* newPublicDsa(DsaOwner record);
[[nodiscard]] TB_API cPKA* newPrivateDsa(DsaOwner record);
// From key bytes: null when the blob cannot be read. The private blob holds p, q, g, y and x.
[[nodiscard]] TB_API cPKA* newPublicDsa(const std::uint8_t* blob, std::uint32_t length);
[[nodiscard]] TB_API cPKA* newPrivateDsa(const std::uint8_t* blob, std::uint32_t length);
// From a parsed DER element, a SubjectPublicKeyInfo or a traditional private key: 0 and the object, or PKA_E_IMPORT,
// and *key left alone.
[[nodiscard]] TB_API Status newPublicDsaFromDer(cPKA** key, const DerElement& sequence);
[[nodiscard]] TB_API Status newPrivateDsaFromDer(cPKA** key, const DerElement& sequence);

} // namespace toolbelt
