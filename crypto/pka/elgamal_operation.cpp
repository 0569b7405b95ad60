// ElGamal encryption and signatures on plain numbers (T. ElGamal, 1985).
#include "crypto/base/heap.h"
#include "crypto/bignum/modular.h"
#include "crypto/pka/elgamal_key.h"
#include "crypto/pka/random_pool.h"
#include "crypto/pka/slot_buffers.h"

namespace toolbelt {
namespace {

// An odd secret k below (p - 1) / 2, or a little above it, with no factor in common with p - 1. The search ends soon:
// an even p - 1 of n bits has fewer than n different factors, and no long run of odd numbers meets them all.
Status takeSecret(BigNum& k, const BigNum& p, const BigNum& pMinusOne)
{
    const std::uint32_t size = (bnBitLength(p) + 7) / 8;
    {
        SecretBytes bytes(size);
        if (!bytes) return PKA_E_MEMORY;
        if (const Status status = takeRandom(bytes.data(), size)) return status;
        if (const Status status = bnImport(k, bytes.data(), size)) return status;
    }
    if (const Status status = bnModulo(k, k, pMinusOne)) return status;
    if (const Status status = bnShiftRight(k, k, 1)) return status;
    if (const Status status = bnSetBit(k, 0)) return status;
    for (BigNum divisor;;) {
        if (const Status status = bnGcd(divisor, k, pMinusOne)) return status;
        if (bnCompareWord(divisor, 1) == 0) return STATUS_OK;
        if (const Status status = bnAddWord(k, k, 2)) return status;
    }
}

bool hasRoomForPair(const ElgamalKey& key, PairForm form, std::uint32_t* capacity)
{
    const std::uint32_t bits = bnBitLength(key.p);
    return hasRoom(capacity, pairCapacity(form, bits, bits));
}

} // namespace

Status elgamalEncrypt(const ElgamalKey& key, PairForm form, std::uint8_t* output, std::uint32_t* outputLength,
                      const std::uint8_t* message, std::uint32_t messageLength)
{
    if (!hasRoomForPair(key, form, outputLength)) return STATUS_BUFFER_TOO_SMALL;
    if (key.magic != ELGAMAL_PUBLIC_MAGIC) return PKA_E_KEY;
    BigNum k, t, m;
    if (const Status status = bnSubtractWord(t, key.p, 1)) return status;
    if (const Status status = takeSecret(k, key.p, t)) return status;

    NumberPair cipher;
    BigNum &a = cipher.first, &b = cipher.second;
    if (const Status status = bnModExp(a, key.g, k, key.p)) return status;
    if (const Status status = bnModExp(b, key.y, k, key.p)) return status;
    if (const Status status = bnImport(m, message, messageLength)) return status;
    if (const Status status = bnModMultiply(b, b, m, key.p)) return status;
    return writePair(cipher, form, output, outputLength);
}

Status elgamalDecrypt(const ElgamalKey& key, std::uint8_t* output, std::uint32_t* outputLength,
                      const std::uint8_t* cipher, std::uint32_t cipherLength)
{
    const std::uint32_t k = (bnBitLength(key.p) + 7) / 8;
    if (!hasRoom(outputLength, k)) return STATUS_BUFFER_TOO_SMALL;
    if (key.magic != ELGAMAL_PRIVATE_MAGIC) return PKA_E_KEY;
    NumberPair pair;
    if (!readPair(pair, PairForm::prefixed, cipher, cipherLength)) return PKA_E_FAILED;
    BigNum t, m;
    if (const Status status = bnModExp(t, pair.first, key.x, key.p)) return status;
    if (const Status status = bnModInverse(t, t, key.p)) return status;
    if (const Status status = bnModMultiply(m, pair.second, t, key.p)) return status;
    bnExport(output, k, m);
    *outputLength = k;
    return STATUS_OK;
}

Status elgamalSign(const ElgamalKey& key, std::uint8_t* output, std::uint32_t* outputLength, const std::uint8_t* digest,
                   std::uint32_t digestLength)
{
    if (!hasRoomForPair(key, PairForm::prefixed, outputLength)) return STATUS_BUFFER_TOO_SMALL;
    if (key.magic != ELGAMAL_PRIVATE_MAGIC) return PKA_E_KEY;
    BigNum k, t, u, inverse;
    if (const Status status = bnSubtractWord(t, key.p, 1)) return status;
    if (const Status status = takeSecret(k, key.p, t)) return status;

    NumberPair signature;
    BigNum &r = signature.first, &s = signature.second;
    if (const Status status = bnModExp(r, key.g, k, key.p)) return status;
    if (const Status status = bnModMultiply(u, key.x, r, t)) return status;

    // u < t, so one t is enough to keep the difference natural.
    if (const Status status = bnImport(s, digest, digestLength)) return status;
    if (const Status status = bnAdd(s, s, t)) return status;
    if (const Status status = bnSubtract(s, s, u)) return status;
    if (const Status status = bnModulo(s, s, t)) return status;

    if (const Status status = bnModInverse(inverse, k, t)) return status;
    if (const Status status = bnModMultiply(s, s, inverse, t)) return status;
    return writePair(signature, PairForm::prefixed, output, outputLength);
}

Status elgamalVerify(const ElgamalKey& key, PairForm form, const std::uint8_t* signature, std::uint32_t signatureLength,
                     const std::uint8_t* digest, std::uint32_t digestLength)
{
    if (key.magic != ELGAMAL_PUBLIC_MAGIC) return PKA_E_KEY;
    NumberPair pair;
    if (!readPair(pair, form, signature, signatureLength)) return PKA_E_FAILED;
    const BigNum &r = pair.first, &s = pair.second;
    if (bnBitLength(r) > ELGAMAL_MAX_SIGNATURE_BITS || bnBitLength(s) > ELGAMAL_MAX_SIGNATURE_BITS) return PKA_E_FAILED;

    BigNum h, left, power, right;
    if (const Status status = bnModExp(left, key.y, r, key.p)) return status;
    if (const Status status = bnModExp(power, r, s, key.p)) return status;
    if (const Status status = bnModMultiply(left, left, power, key.p)) return status;
    if (const Status status = bnImport(h, digest, digestLength)) return status;
    if (const Status status = bnModExp(right, key.g, h, key.p)) return status;
    return bnCompare(left, right) == 0 ? STATUS_OK : PKA_E_FAILED;
}

} // namespace toolbelt
