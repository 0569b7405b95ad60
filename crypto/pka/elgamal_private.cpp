// cPrivateElgamal.
#include "crypto/pka/elgamal.h"
#include "crypto/pka/key_object.h"
#include "crypto/pka/slot_buffers.h"

namespace toolbelt {

cPrivateElgamal::cPrivateElgamal(ElgamalKey* record) : record_(record), keyLength_(elgamalKeyLength(*record))
{
    algorithm_ = PKA_ELGAMAL;
}

cPrivateElgamal::~cPrivateElgamal()
{
    delete record_;
}

std::int32_t cPrivateElgamal::keyLength()
{
    return keyLength_;
}

Status cPrivateElgamal::privateFromPrefixed(std::uint8_t* output, std::uint32_t* outputLength,
                                            const std::uint8_t* input, std::uint32_t inputLength)
{
    return outcome(elgamalDecrypt(*record_, output, outputLength, input, inputLength), PKA_E_RAW_FAILED);
}

Status cPrivateElgamal::signPrefixed(std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* input,
                                     std::uint32_t inputLength)
{
    return outcome(elgamalSign(*record_, output, outputLength, input, inputLength), PKA_E_RAW_FAILED);
}

Status cPrivateElgamal::exportDer(std::uint8_t* output, std::uint32_t* outputLength)
{
    return exportElgamalPrivateDer(*record_, output, outputLength);
}

Status cPrivateElgamal::makePublic(cPKA** key)
{
    if (record_->magic != ELGAMAL_PRIVATE_MAGIC) return PKA_E_OBJECT;
    ElgamalOwner half(newElgamalKey(ELGAMAL_PUBLIC_MAGIC));
    if (!half || ensureElgamalPublicValue(*record_) != STATUS_OK) return PKA_E_OBJECT;
    for (BigNum ElgamalKey::*number : {&ElgamalKey::p, &ElgamalKey::g, &ElgamalKey::y, &ElgamalKey::fourth})
        if (bnCopy((*half).*number, (*record_).*number) != STATUS_OK) return PKA_E_OBJECT;
    return giveKey(key, newPublicElgamal(std::move(half)), PKA_E_OBJECT);
}

cPKA* newPrivateElgamal(ElgamalOwner record)
{
    return newKeyObject<cPrivateElgamal>(std::move(record));
}

cPKA* newPrivateElgamal(const std::uint8_t* blob, std::uint32_t length)
{
    return newKeyFrom<cPrivateElgamal, ElgamalOwner>(
        [&](ElgamalKey** record) { return importElgamalPrivateBlob(record, blob, length); });
}

Status newPrivateElgamalFromDer(cPKA** key, const DerElement& sequence)
{
    const auto read = [&](ElgamalKey** record) { return importElgamalPrivateDer(record, sequence); };
    return giveKey(key, newKeyFrom<cPrivateElgamal, ElgamalOwner>(read), PKA_E_IMPORT);
}

} // namespace toolbelt
