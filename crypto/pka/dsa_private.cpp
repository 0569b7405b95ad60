// cPrivateDSA.
#include "crypto/pka/dsa.h"
#include "crypto/pka/key_object.h"
#include "crypto/pka/slot_buffers.h"

namespace toolbelt {
namespace {

// The sign core demands the public mark, while a private record carries, and its export demands, the private one: the
// core is lent a record of views. A record with neither mark stays refused.
Status sign(const DsaKey& key, PairForm form, std::uint8_t* output, std::uint32_t* outputLength,
            const std::uint8_t* input, std::uint32_t inputLength)
{
    DsaKey lent;
    lent.magic = key.magic == DSA_PRIVATE_MAGIC ? DSA_PUBLIC_MAGIC : key.magic;
    for (BigNum DsaKey::*number : {&DsaKey::p, &DsaKey::g, &DsaKey::q, &DsaKey::x})
        if (bnView(lent.*number, key.*number, 0) != STATUS_OK) return PKA_E_RAW_FAILED;
    return outcome(dsaSign(lent, form, output, outputLength, input, inputLength), PKA_E_RAW_FAILED);
}

} // namespace

cPrivateDSA::cPrivateDSA(DsaKey* record) : record_(record), keyLength_(dsaKeyLength(*record))
{
    algorithm_ = PKA_DSA;
}

cPrivateDSA::~cPrivateDSA()
{
    delete record_;
}

std::int32_t cPrivateDSA::keyLength()
{
    return keyLength_;
}

std::int32_t cPrivateDSA::maxInputLength()
{
    return DSA_DIGEST_LENGTH;
}

Status cPrivateDSA::signPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                                 std::uint32_t inputLength)
{
    return sign(*record_, PairForm::prefixed, output, outputLength, input, inputLength);
}

Status cPrivateDSA::signDer(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                            std::uint32_t inputLength)
{
    return sign(*record_, PairForm::der, output, outputLength, input, inputLength);
}

Status cPrivateDSA::exportDer(std::uint8_t* output, std::uint32_t* outputLength)
{
    return exportDsaPrivateDer(*record_, output, outputLength);
}

Status cPrivateDSA::makePublic(cPKA** key)
{
    if (record_->magic != DSA_PRIVATE_MAGIC) return PKA_E_HEADER;
    DsaOwner half(newDsaKey(DSA_PUBLIC_MAGIC));
    if (!half || ensureDsaPublicValue(*record_) != STATUS_OK) return PKA_E_OBJECT;
    half->reserved = record_->reserved;
    for (BigNum DsaKey::*number : {&DsaKey::p, &DsaKey::g, &DsaKey::q, &DsaKey::y})
        if (bnCopy((*half).*number, (*record_).*number) != STATUS_OK) return PKA_E_OBJECT;
    return giveKey(key, newPublicDsa(std::move(half)), PKA_E_OBJECT);
}

cPKA* newPrivateDsa(DsaOwner record)
{
    return newKeyObject<cPrivateDSA>(std::move(record));
}

cPKA* newPrivateDsa(const std::uint8_t* blob, std::uint32_t length)
{
    return newKeyFrom<cPrivateDSA, DsaOwner>(
        [&](DsaKey** record) { return importDsaPrivateBlob(record, blob, length); });
}

Status newPrivateDsaFromDer(cPKA** key, const DerElement& sequence)
{
    const auto read = [&](DsaKey** record) { return importDsaPrivateDer(record, sequence); };
    return giveKey(key, newKeyFrom<cPrivateDSA, DsaOwner>(read), PKA_E_IMPORT);
}

} // namespace toolbelt
