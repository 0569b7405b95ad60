// RSA keys from bytes: blobs of prefixed numbers (RFC 4880) and the DER forms of RFC 8017, appendix A.1.
#include "crypto/pka/key_bytes.h"
#include "crypto/pka/pka.h"
#include "crypto/pka/rsa_key.h"

namespace toolbelt {
namespace {

// An even modulus has no use in RSA, and would take the slow road of exponentiation. An even exponent has no inverse,
// and 1 leaves every input as it is.
bool usable(const BigNum& n, const BigNum& e)
{
    if (isTooLong(n) || bnTestBit(n, 0) == 0 || bnCompareWord(n, 1) <= 0) return false;
    if (bnTestBit(e, 0) == 0 || bnCompareWord(e, 3) < 0) return false;
    return bnBitLength(e) <= (bnBitLength(n) > RSA_LONG_BITS ? RSA_LONG_KEY_EXPONENT_BITS : RSA_LONG_BITS);
}

Status finishPublic(RsaPublicKey** key, RsaPublicOwner& record)
{
    if (!usable(*record->n, *record->e)) return PKA_E_KEY;
    record->bits = static_cast<std::uint16_t>(bnBitLength(*record->n));
    *key = record.release();
    return STATUS_OK;
}

// The lengths are checked before the completion, to bound its work, and the public half after it, since it makes n.
Status finishPrivate(RsaPrivateKey** key, RsaPrivateOwner& record)
{
    for (const BigNum* number : {record->n, record->e, record->d, record->p, record->q, record->qinv})
        if (isTooLong(*number)) return PKA_E_KEY;
    if (bnBitLength(*record->p) + bnBitLength(*record->q) > PKA_MAX_KEY_BITS + 1) return PKA_E_KEY;
    if (const Status status = completeRsaPrivate(*record)) return status;
    if (!usable(*record->n, *record->e)) return PKA_E_KEY;
    *key = record.release();
    return STATUS_OK;
}

} // namespace

Status importRsaPublic(RsaPublicKey** key, const std::uint8_t* blob, std::uint32_t length)
{
    RsaPublicOwner record(newRsaPublicKey());
    if (!record) return PKA_E_MEMORY;
    std::uint32_t offset = 0;
    if (!readPrefixed({record->n, record->e}, blob, length, offset)) return PKA_E_KEY;
    return finishPublic(key, record);
}

Status importRsaPrivate(RsaPrivateKey** key, const std::uint8_t* publicBlob, std::uint32_t publicLength,
                        const std::uint8_t* privateBlob, std::uint32_t privateLength)
{
    RsaPrivateOwner record(newRsaPrivateKey());
    if (!record) return PKA_E_MEMORY;
    std::uint32_t offset = 0;
    if (!readPrefixed({record->n, record->e}, publicBlob, publicLength, offset)) return PKA_E_KEY;
    offset = 0;
    // A blob names the smaller prime first; the completion puts the two where they belong.
    if (!readPrefixed({record->d, record->p, record->q, record->qinv}, privateBlob, privateLength, offset))
        return PKA_E_KEY;
    return finishPrivate(key, record);
}

Status importRsaPrivateBlob(RsaPrivateKey** key, const std::uint8_t* blob, std::uint32_t length)
{
    RsaPrivateOwner record(newRsaPrivateKey());
    if (!record) return PKA_E_MEMORY;
    std::uint32_t offset = 0;
    if (!readPrefixed({record->n, record->e, record->d, record->p, record->q, record->qinv}, blob, length, offset))
        return PKA_E_KEY;
    return finishPrivate(key, record);
}

Status importRsaPublicDer(RsaPublicKey** key, const DerElement& sequence)
{
    if (!isSequence(sequence)) return PKA_E_KEY;
    RsaPublicOwner record(newRsaPublicKey());
    if (!record) return PKA_E_MEMORY;
    if (!readIntegers({record->n, record->e}, sequence.content, sequence.contentLength)) return PKA_E_KEY;
    return finishPublic(key, record);
}

Status importRsaPrivateDer(RsaPrivateKey** key, const DerElement& sequence)
{
    RsaPrivateOwner record(newRsaPrivateKey());
    if (!record) return PKA_E_MEMORY;
    // A version other than 0 is a key of more than two primes. dp and dq are read to see that they are there; the
    // completion computes them anew.
    if (!readVersionedSequence(
            {record->n, record->e, record->d, record->p, record->q, record->dp, record->dq, record->qinv}, sequence))
        return PKA_E_KEY;
    return finishPrivate(key, record);
}

} // namespace toolbelt
