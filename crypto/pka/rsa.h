// RSA key objects: cPublicRSA and cPrivateRSA over the key records of rsa_key.h, and their factories.
//
// A raw operation that fails is PKA_E_RAW_FAILED in the slots with a prefixed side and PKA_E_FAILED in those with a DER
// side. A capacity that is too small is replaced by the length needed. On any other failure the length is left alone,
// and so is the output, unless the input was refused as too short for a small exponent (PKA_E_SHORT_INPUT of the raw
// operation): then the number was written before it was refused.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/pka/pka.h"
#include "crypto/pka/rsa_key.h"

namespace toolbelt {

// Both classes are made by the factories below, and used through cPKA. A program may ask an object for its record when
// algorithm() says which class it has.
class cPublicRSA : public cPKA
{
public:
    // Takes ownership of the record.
    explicit cPublicRSA(RsaPublicKey* record);
    std::int32_t keyLength() override;
    Status encryptPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                           std::uint32_t inputLength) override;
    Status rawToDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                    std::uint32_t inputLength) override;
    Status verifyPrefixed(const std::uint8_t* signature, std::uint32_t signatureLength, const std::uint8_t* digest,
                          std::uint32_t digestLength) override;
    Status verifyDer(const std::uint8_t* signature, std::uint32_t signatureLength, const std::uint8_t* digest,
                     std::uint32_t digestLength) override;
    Status publicFromPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                              std::uint32_t inputLength) override;
    Status publicFromDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                         std::uint32_t inputLength) override;
    ~cPublicRSA() override;
    Status exportNumbers(std::uint8_t* output, std::uint32_t* outputLength) override;
    Status exportDer(std::uint8_t* output, std::uint32_t* outputLength) override;
    Status exportSsh(std::uint8_t* output, std::uint32_t* outputLength) override;

    const RsaPublicKey& record() const { return *record_; }

private:
    RsaPublicKey* record_;
    std::int32_t keyLength_;
};

class cPrivateRSA : public cPKA
{
public:
    // Takes ownership of the record.
    explicit cPrivateRSA(RsaPrivateKey* record);
    std::int32_t keyLength() override;
    Status rawToDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                    std::uint32_t inputLength) override;
    Status privateFromPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                               std::uint32_t inputLength) override;
    Status privateFromDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                          std::uint32_t inputLength) override;
    Status signPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                        std::uint32_t inputLength) override;
    Status signDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                   std::uint32_t inputLength) override;
    ~cPrivateRSA() override;
    Status exportNumbers(std::uint8_t* output, std::uint32_t* outputLength) override;
    Status exportDer(std::uint8_t* output, std::uint32_t* outputLength) override;
    Status makePublic(cPKA** key) override;

    const RsaPrivateKey& record() const { return *record_; }

private:
    RsaPrivateKey* record_;
    std::int32_t keyLength_;
};

// The object over a record, which it owns from then on; null, and the record freed, when memory has run out. A null
// record gives null.
[[nodiscard]] TB_API cPKA* newPublicRsa(RsaPublicOwner record);
[[nodiscard]] TB_API cPKA* newPrivateRsa(RsaPrivateOwner record);
// From key bytes: null when the blob cannot be read. From a parsed DER element: 0 and the object, or
// PKA_E_IMPORT, and *key left alone. The private blob holds n and e first, then d, q, p and qinv.
[[nodiscard]] TB_API cPKA* newPublicRsa(const std::uint8_t* blob, std::uint32_t length);
[[nodiscard]] TB_API cPKA* newPrivateRsa(const std::uint8_t* blob, std::uint32_t length);
[[nodiscard]] TB_API Status newPublicRsaFromDer(cPKA** key, const DerElement& sequence);
[[nodiscard]] TB_API Status newPrivateRsaFromDer(cPKA** key, const DerElement& sequence);

} // namespace toolbelt
