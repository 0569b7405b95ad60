// cPublicRSA. The slots differ in the order of their checks on purpose: callers ask for a length in either state.
#include "crypto/pka/key_object.h"
#include "crypto/pka/rsa.h"
#include "crypto/pka/slot_buffers.h"

namespace toolbelt {

cPublicRSA::cPublicRSA(RsaPublicKey* record)
    : record_(record), keyLength_(static_cast<std::int32_t>(rsaLength(record->bits)))
{
    algorithm_ = PKA_RSA;
}

cPublicRSA::~cPublicRSA()
{
    freeRsaKey(record_);
}

std::int32_t cPublicRSA::keyLength()
{
    return keyLength_;
}

Status cPublicRSA::encryptPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                                   std::uint32_t inputLength)
{
    const auto k = static_cast<std::uint32_t>(keyLength_);
    if (!hasRoom(outputLength, k + 2)) return STATUS_BUFFER_TOO_SMALL;
    if (inputLength != k) return PKA_E_LENGTH;
    if (rsaPublicOperation(*record_, input, output, RSA_PREFIXED_OUTPUT) != STATUS_OK) return PKA_E_RAW_FAILED;
    *outputLength = k + 2;
    return STATUS_OK;
}

Status cPublicRSA::rawToDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                            std::uint32_t inputLength)
{
    const auto k = static_cast<std::uint32_t>(keyLength_);
    if (inputLength != k) return PKA_E_LENGTH;
    OctetStringOutput der;
    if (const Status status = der.open(output, outputLength, k)) return status;
    if (rsaPublicOperation(*record_, input, der.content(), RSA_RAW) != STATUS_OK) return PKA_E_FAILED;
    return der.close();
}

Status cPublicRSA::verifyPrefixed(const std::uint8_t* signature, std::uint32_t signatureLength,
                                  const std::uint8_t* digest, std::uint32_t digestLength)
{
    const auto k = static_cast<std::uint32_t>(keyLength_);
    if (signatureLength < k + 2) return STATUS_BUFFER_TOO_SMALL;
    if (digestLength > k) return PKA_E_LENGTH;
    return rsaVerify(*record_, signature, RSA_PREFIXED_INPUT, digest, digestLength);
}

// A certificate carries its signature as a BIT STRING, other messages as an OCTET STRING.
Status cPublicRSA::verifyDer(const std::uint8_t* signature, std::uint32_t signatureLength, const std::uint8_t* digest,
                             std::uint32_t digestLength)
{
    DerElement octets;
    if (parseElement(octets, signature, signatureLength, nullptr, nullptr, DER_OCTET_STRING) != STATUS_OK) {
        DerBitString bits;
        if (const Status status = readBitString(bits, signature, signatureLength)) return status;
        octets = bits.element;
    }
    if (octets.contentLength != static_cast<std::uint32_t>(keyLength_)) return PKA_E_LENGTH;
    return rsaVerify(*record_, octets.content, RSA_RAW, digest, digestLength);
}

Status cPublicRSA::publicFromPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                                      std::uint32_t inputLength)
{
    const auto k = static_cast<std::uint32_t>(keyLength_);
    if (inputLength < k + 2) return PKA_E_LENGTH;
    if (!hasRoom(outputLength, k)) return STATUS_BUFFER_TOO_SMALL;
    if (rsaPublicOperation(*record_, input, output, RSA_PREFIXED_INPUT) != STATUS_OK) return PKA_E_RAW_FAILED;
    *outputLength = k;
    return STATUS_OK;
}

Status cPublicRSA::publicFromDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                                 std::uint32_t inputLength)
{
    const auto k = static_cast<std::uint32_t>(keyLength_);
    const std::uint8_t* content = octetStringContent(input, inputLength, k);
    if (content == nullptr) return PKA_E_LENGTH;
    if (!hasRoom(outputLength, k)) return STATUS_BUFFER_TOO_SMALL;
    if (rsaPublicOperation(*record_, content, output, RSA_RAW) != STATUS_OK) return PKA_E_FAILED;
    *outputLength = k;
    return STATUS_OK;
}

Status cPublicRSA::exportNumbers(std::uint8_t* output, std::uint32_t* outputLength)
{
    return exportRsaPublic(*record_, output, outputLength);
}

Status cPublicRSA::exportDer(std::uint8_t* output, std::uint32_t* outputLength)
{
    return exportRsaPublicDer(*record_, output, outputLength);
}

Status cPublicRSA::exportSsh(std::uint8_t* output, std::uint32_t* outputLength)
{
    return exportRsaSsh(*record_, output, outputLength);
}

cPKA* newPublicRsa(RsaPublicOwner record)
{
    return newKeyObject<cPublicRSA>(std::move(record));
}

cPKA* newPublicRsa(const std::uint8_t* blob, std::uint32_t length)
{
    return newKeyFrom<cPublicRSA, RsaPublicOwner>(
        [&](RsaPublicKey** record) { return importRsaPublic(record, blob, length); });
}

Status newPublicRsaFromDer(cPKA** key, const DerElement& sequence)
{
    const auto read = [&](RsaPublicKey** record) { return importRsaPublicDer(record, sequence); };
    return giveKey(key, newKeyFrom<cPublicRSA, RsaPublicOwner>(read), PKA_E_IMPORT);
}

} // namespace toolbelt
