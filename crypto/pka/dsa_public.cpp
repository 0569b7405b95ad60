// cPublicDSA.
#include "crypto/pka/dsa.h"
#include "crypto/pka/key_object.h"
#include "crypto/pka/public_key_info.h"
#include "crypto/pka/slot_buffers.h"

namespace toolbelt {

cPublicDSA::cPublicDSA(DsaKey* record) : record_(record), keyLength_(dsaKeyLength(*record))
{
    algorithm_ = PKA_DSA;
}

cPublicDSA::~cPublicDSA()
{
    delete record_;
}

std::int32_t cPublicDSA::keyLength()
{
    return keyLength_;
}

std::int32_t cPublicDSA::maxInputLength()
{
    return DSA_DIGEST_LENGTH;
}

Status cPublicDSA::verifyPrefixed(const std::uint8_t* signature, std::uint32_t signatureLength,
                                  const std::uint8_t* digest, std::uint32_t digestLength)
{
    return outcome(dsaVerify(*record_, PairForm::prefixed, signature, signatureLength, digest, digestLength),
                   PKA_E_FAILED);
}

Status cPublicDSA::verifyDer(const std::uint8_t* signature, std::uint32_t signatureLength, const std::uint8_t* digest,
                             std::uint32_t digestLength)
{
    return outcome(dsaVerify(*record_, PairForm::der, signature, signatureLength, digest, digestLength), PKA_E_FAILED);
}

Status cPublicDSA::exportDer(std::uint8_t* output, std::uint32_t* outputLength)
{
    return exportDsaPublicDer(*record_, output, outputLength);
}

cPKA* newPublicDsa(DsaOwner record)
{
    return newKeyObject<cPublicDSA>(std::move(record));
}

cPKA* newPublicDsa(const std::uint8_t* blob, std::uint32_t length)
{
    return newKeyFrom<cPublicDSA, DsaOwner>([&](DsaKey** record) { return importDsaPublic(record, blob, length); });
}

Status newPublicDsaFromDer(cPKA** key, const DerElement& sequence)
{
    const auto read = [&](DsaKey** record) {
        PublicKeyInfoParts parts;
        if (const Status status = parts.read(sequence, PKA_DSA)) return status;
        return importDsaPublicInfo(record, parts.algorithm.parameters, parts.key.element);
    };
    return giveKey(key, newKeyFrom<cPublicDSA, DsaOwner>(read), PKA_E_IMPORT);
}

} // namespace toolbelt
