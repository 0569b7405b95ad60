// RSA: key records, raw operations, and the key objects cPublicRSA and cPrivateRSA (PKCS #1 v1.5 blocks, RFC 8017).
//
// Nothing here is protected against a watcher of its timing: private operations are not blinded.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/bignum/bignum.h"
#include "crypto/encoding/der.h"
#include "crypto/pka/pka.h"

namespace toolbelt {

// A number of a key record: allocated with the record, wiped and freed with it.
struct RsaPublicKey
{
    std::uint16_t bits = 0; // bit length of n
    BigNum* n = nullptr;    // modulus
    BigNum* e = nullptr;    // public exponent
    std::uint32_t reserved = 0;
};

struct RsaPrivateKey
{
    std::uint16_t bits = 0; // bit length of n
    BigNum* n = nullptr;    // modulus p * q
    BigNum* e = nullptr;    // public exponent
    BigNum* d = nullptr;    // private exponent
    BigNum* p = nullptr;    // larger prime
    BigNum* q = nullptr;    // smaller prime
    BigNum* dp = nullptr;   // d mod (p - 1)
    BigNum* dq = nullptr;   // d mod (q - 1)
    BigNum* qinv = nullptr; // q^-1 mod p
};

// A new record, every number one zero limb; null when memory has run out. Released by the functions below; null is ignored.
TB_API RsaPublicKey* newRsaPublicKey();
TB_API RsaPrivateKey* newRsaPrivateKey();
TB_API void freeRsaKey(RsaPublicKey* key);
TB_API void freeRsaKey(RsaPrivateKey* key);

// Form of a raw operation's input and output; the two bits may be combined. Clear means exactly k big-endian bytes.
enum RsaMode : std::uint32_t {
    RSA_RAW = 0,
    RSA_PREFIXED_INPUT = 1,  // prefixed form, read from k + 2 bytes
    RSA_PREFIXED_OUTPUT = 2, // prefixed form, written into k + 2 bytes, zeros behind a shorter number
};

// output = input^e mod n. PKA_E_RANGE when a prefixed number does not fit; PKA_E_SHORT_INPUT, with the output written,
// for a short input to an exponent below 4097.
[[nodiscard]] TB_API Status rsaPublicOperation(const RsaPublicKey& key, const std::uint8_t* input, std::uint8_t* output, std::uint32_t mode);
// output = input^d mod n, by the Chinese remainder theorem.
[[nodiscard]] TB_API Status rsaPrivateOperation(const RsaPrivateKey& key, const std::uint8_t* input, std::uint8_t* output, std::uint32_t mode);

// Key blobs of prefixed numbers: n, e; and d, q, p, qinv. PKA_E_KEY when they cannot be read; on failure *key is left alone.
[[nodiscard]] TB_API Status importRsaPublic(RsaPublicKey** key, const std::uint8_t* blob, std::uint32_t length);
[[nodiscard]] TB_API Status importRsaPrivate(RsaPrivateKey** key, const std::uint8_t* publicBlob, std::uint32_t publicLength,
                                             const std::uint8_t* privateBlob, std::uint32_t privateLength);
[[nodiscard]] TB_API Status exportRsaPublic(const RsaPublicKey& key, std::uint8_t* output, std::uint32_t* inOutSize);
[[nodiscard]] TB_API Status exportRsaPrivate(const RsaPrivateKey& key, std::uint8_t* output, std::uint32_t* inOutSize);
// RSAPublicKey: a SEQUENCE of n and e that they fill exactly.
[[nodiscard]] TB_API Status importRsaPublicDer(RsaPublicKey** key, const DerElement& sequence);
// RSAPrivateKey of RFC 8017, appendix A.1.2 (version 0).
[[nodiscard]] TB_API Status importRsaPrivateDer(RsaPrivateKey** key, const DerElement& sequence);
// Brings a record whose n, e, d, p, q and qinv were loaded to its invariants (p > q, and every number what it should be).
[[nodiscard]] TB_API Status completeRsaPrivate(RsaPrivateKey& key);

class TB_API cPublicRSA : public cPKA
{
public:
    // Takes ownership of the record.
    explicit cPublicRSA(RsaPublicKey* record);
    std::int32_t keyLength() override;
    Status encryptPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input, std::uint32_t inputLength) override;
    Status rawToDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input, std::uint32_t inputLength) override;
    Status verifyPrefixed(const std::uint8_t* signature, std::uint32_t signatureLength, const std::uint8_t* digest, std::uint32_t digestLength) override;
    Status verifyDer(const std::uint8_t* signature, std::uint32_t signatureLength, const std::uint8_t* digest, std::uint32_t digestLength) override;
    Status publicFromPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input, std::uint32_t inputLength) override;
    Status publicFromDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input, std::uint32_t inputLength) override;
    ~cPublicRSA() override;
    Status exportNumbers(std::uint8_t* output, std::uint32_t* outputLength) override;
    Status exportDer(std::uint8_t* output, std::uint32_t* outputLength) override;
    Status exportSsh(std::uint8_t* output, std::uint32_t* outputLength) override;

    const RsaPublicKey& record() const { return *record_; }

private:
    RsaPublicKey* record_;
    std::int32_t keyLength_;
};

class TB_API cPrivateRSA : public cPKA
{
public:
    explicit cPrivateRSA(RsaPrivateKey* record);
    std::int32_t keyLength() override;
    Status rawToDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input, std::uint32_t inputLength) override;
    Status privateFromPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input, std::uint32_t inputLength) override;
    Status privateFromDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input, std::uint32_t inputLength) override;
    Status signPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input, std::uint32_t inputLength) override;
    Status signDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input, std::uint32_t inputLength) override;
    ~cPrivateRSA() override;
    Status exportNumbers(std::uint8_t* output, std::uint32_t* outputLength) override;
    Status exportDer(std::uint8_t* output, std::uint32_t* outputLength) override;
    Status makePublic(cPKA** key) override;

    const RsaPrivateKey& record() const { return *record_; }

private:
    RsaPrivateKey* record_;
    std::int32_t keyLength_;
};

// Factories. From key bytes: null when the blob cannot be read. From a parsed DER element: 0 and the object, or
// PKA_E_IMPORT, and *key left alone. The private blob holds n and e first, then d, q, p and qinv.
[[nodiscard]] TB_API cPKA* newPublicRsa(const std::uint8_t* blob, std::uint32_t length);
[[nodiscard]] TB_API cPKA* newPrivateRsa(const std::uint8_t* blob, std::uint32_t length);
[[nodiscard]] TB_API Status newPublicRsaFromDer(cPKA** key, const DerElement& sequence);
[[nodiscard]] TB_API Status newPrivateRsaFromDer(cPKA** key, const DerElement& sequence);

} // namespace toolbelt
