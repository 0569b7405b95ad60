// cPrivateRSA. The slots differ in the order of their checks on purpose: callers ask for a length in either state.
#include "crypto/base/heap.h"
#include "crypto/pka/key_object.h"
#include "crypto/pka/pkcs1.h"
#include "crypto/pka/rsa.h"
#include "crypto/pka/slot_buffers.h"

namespace toolbelt {
namespace {

// Finds the block of k bytes to sign: the input itself when it is one already, else the input padded into `padded`.
Status signatureBlock(const std::uint8_t** block, SecretBytes& padded, std::uint32_t k, const std::uint8_t* input,
                      std::uint32_t inputLength)
{
    if (inputLength > k) return PKA_E_LENGTH;
    if (inputLength == k) {
        const std::uint8_t* payload;
        std::uint32_t payloadLength;
        *block = input;
        return pkcs1Unpad(&payload, &payloadLength, input, k, PKCS1_SIGNATURE);
    }
    padded = SecretBytes(k);
    if (!padded) return PKA_E_MEMORY;
    *block = padded.data();
    return pkcs1Pad(padded.data(), k, PKCS1_SIGNATURE, input, inputLength);
}

} // namespace

cPrivateRSA::cPrivateRSA(RsaPrivateKey* record)
    : record_(record), keyLength_(static_cast<std::int32_t>(rsaLength(record->bits)))
{
    algorithm_ = PKA_RSA;
}

cPrivateRSA::~cPrivateRSA()
{
    freeRsaKey(record_);
}

std::int32_t cPrivateRSA::keyLength()
{
    return keyLength_;
}

Status cPrivateRSA::rawToDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                             std::uint32_t inputLength)
{
    const auto k = static_cast<std::uint32_t>(keyLength_);
    if (inputLength != k) return PKA_E_LENGTH;
    OctetStringOutput der;
    if (const Status status = der.open(output, outputLength, k)) return status;
    if (rsaPrivateOperation(*record_, input, der.content(), RSA_RAW) != STATUS_OK) return PKA_E_FAILED;
    return der.close();
}

Status cPrivateRSA::privateFromPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                                        std::uint32_t inputLength)
{
    const auto k = static_cast<std::uint32_t>(keyLength_);
    if (inputLength < k + 2) return PKA_E_LENGTH;
    if (!hasRoom(outputLength, k)) return STATUS_BUFFER_TOO_SMALL;
    if (rsaPrivateOperation(*record_, input, output, RSA_PREFIXED_INPUT) != STATUS_OK) return PKA_E_RAW_FAILED;
    *outputLength = k;
    return STATUS_OK;
}

Status cPrivateRSA::privateFromDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                                   std::uint32_t inputLength)
{
    const auto k = static_cast<std::uint32_t>(keyLength_);
    const std::uint8_t* content = octetStringContent(input, inputLength, k);
    if (content == nullptr) return PKA_E_LENGTH;
    if (!hasRoom(outputLength, k)) return STATUS_BUFFER_TOO_SMALL;
    if (rsaPrivateOperation(*record_, content, output, RSA_RAW) != STATUS_OK) return PKA_E_FAILED;
    *outputLength = k;
    return STATUS_OK;
}

Status cPrivateRSA::signPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                                 std::uint32_t inputLength)
{
    const auto k = static_cast<std::uint32_t>(keyLength_);
    if (!hasRoom(outputLength, k + 2)) return STATUS_BUFFER_TOO_SMALL;
    const std::uint8_t* block = nullptr;
    SecretBytes padded;
    if (const Status status = signatureBlock(&block, padded, k, input, inputLength)) return status;
    if (rsaPrivateOperation(*record_, block, output, RSA_PREFIXED_OUTPUT) != STATUS_OK) return PKA_E_RAW_FAILED;
    *outputLength = k + 2;
    return STATUS_OK;
}

Status cPrivateRSA::signDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                            std::uint32_t inputLength)
{
    const auto k = static_cast<std::uint32_t>(keyLength_);
    OctetStringOutput der;
    if (const Status status = der.open(output, outputLength, k)) return status;
    const std::uint8_t* block = nullptr;
    SecretBytes padded;
    if (const Status status = signatureBlock(&block, padded, k, input, inputLength)) return status;
    if (rsaPrivateOperation(*record_, block, der.content(), RSA_RAW) != STATUS_OK) return PKA_E_FAILED;
    return der.close();
}

Status cPrivateRSA::exportNumbers(std::uint8_t* output, std::uint32_t* outputLength)
{
    return exportRsaPrivate(*record_, output, outputLength);
}

Status cPrivateRSA::exportDer(std::uint8_t* output, std::uint32_t* outputLength)
{
    return exportRsaPrivateDer(*record_, output, outputLength);
}

Status cPrivateRSA::makePublic(cPKA** key)
{
    RsaPublicOwner half(newRsaPublicKey());
    if (!half || bnCopy(*half->n, *record_->n) != STATUS_OK || bnCopy(*half->e, *record_->e) != STATUS_OK)
        return PKA_E_OBJECT;
    half->bits = record_->bits;
    return giveKey(key, newPublicRsa(std::move(half)), PKA_E_OBJECT);
}

cPKA* newPrivateRsa(RsaPrivateOwner record)
{
    return newKeyObject<cPrivateRSA>(std::move(record));
}

cPKA* newPrivateRsa(const std::uint8_t* blob, std::uint32_t length)
{
    return newKeyFrom<cPrivateRSA, RsaPrivateOwner>(
        [&](RsaPrivateKey** record) { return importRsaPrivateBlob(record, blob, length); });
}

Status newPrivateRsaFromDer(cPKA** key, const DerElement& sequence)
{
    const auto read = [&](RsaPrivateKey** record) { return importRsaPrivateDer(record, sequence); };
    return giveKey(key, newKeyFrom<cPrivateRSA, RsaPrivateOwner>(read), PKA_E_IMPORT);
}

} // namespace toolbelt
