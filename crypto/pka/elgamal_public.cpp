// cPublicElgamal.
#include "crypto/pka/elgamal.h"
#include "crypto/pka/key_object.h"
#include "crypto/pka/public_key_info.h"
#include "crypto/pka/slot_buffers.h"

namespace toolbelt {
namespace {

Status encrypt(const ElgamalKey& key, PairForm form, std::uint8_t* output, std::uint32_t* outputLength,
               const std::uint8_t* input, std::uint32_t inputLength)
{
    return outcome(elgamalEncrypt(key, form, output, outputLength, input, inputLength), PKA_E_RAW_FAILED, PKA_E_RANDOM);
}

Status verify(const ElgamalKey& key, PairForm form, const std::uint8_t* signature, std::uint32_t signatureLength,
              const std::uint8_t* digest, std::uint32_t digestLength)
{
    return outcome(elgamalVerify(key, form, signature, signatureLength, digest, digestLength), PKA_E_FAILED);
}

} // namespace

cPublicElgamal::cPublicElgamal(ElgamalKey* record) : record_(record), keyLength_(elgamalKeyLength(*record))
{
    algorithm_ = PKA_ELGAMAL;
}

cPublicElgamal::~cPublicElgamal()
{
    delete record_;
}

std::int32_t cPublicElgamal::keyLength()
{
    return keyLength_;
}

Status cPublicElgamal::encryptPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                                       std::uint32_t inputLength)
{
    return encrypt(*record_, PairForm::prefixed, output, outputLength, input, inputLength);
}

Status cPublicElgamal::rawToDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                                std::uint32_t inputLength)
{
    return encrypt(*record_, PairForm::der, output, outputLength, input, inputLength);
}

Status cPublicElgamal::verifyPrefixed(const std::uint8_t* signature, std::uint32_t signatureLength,
                                      const std::uint8_t* digest, std::uint32_t digestLength)
{
    return verify(*record_, PairForm::prefixed, signature, signatureLength, digest, digestLength);
}

Status cPublicElgamal::verifyDer(const std::uint8_t* signature, std::uint32_t signatureLength,
                                 const std::uint8_t* digest, std::uint32_t digestLength)
{
    return verify(*record_, PairForm::der, signature, signatureLength, digest, digestLength);
}

Status cPublicElgamal::exportDer(std::uint8_t* output, std::uint32_t* outputLength)
{
    return exportElgamalPublicDer(*record_, output, outputLength);
}

cPKA* newPublicElgamal(ElgamalOwner record)
{
    return newKeyObject<cPublicElgamal>(std::move(record));
}

cPKA* newPublicElgamal(const std::uint8_t* blob, std::uint32_t length)
{
    return newKeyFrom<cPublicElgamal, ElgamalOwner>(
        [&](ElgamalKey** record) { return importElgamalPublic(record, blob, length); });
}

Status newPublicElgamalFromDer(cPKA** key, const DerElement& sequence)
{
    const auto read = [&](ElgamalKey** record) {
        PublicKeyInfoParts parts;
        if (const Status status = parts.read(sequence, PKA_ELGAMAL)) return status;
        return importElgamalPublicInfo(record, parts.algorithm.parameters, parts.key.element);
    };
    return giveKey(key, newKeyFrom<cPublicElgamal, ElgamalOwner>(read), PKA_E_IMPORT);
}

} // namespace toolbelt
