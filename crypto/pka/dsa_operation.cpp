// Signing and verification with DSA (FIPS 186, sections 4.6 and 4.7). The digest is a number of any length and is never
// cut to the length of q.
#include "crypto/base/heap.h"
#include "crypto/bignum/modular.h"
#include "crypto/pka/dsa_key.h"
#include "crypto/pka/key_bytes.h"
#include "crypto/pka/random_pool.h"
#include "crypto/pka/slot_buffers.h"

namespace toolbelt {
namespace {

// Stands in for a secret of 0. It protects nothing, but by design it gives a signature that verifies.
constexpr std::uint64_t SECRET_FOR_ZERO = 0x13579BDF02468ACE;

// k mod q, from the random pool.
Status takeSecret(BigNum& k, const BigNum& q)
{
    std::uint8_t bytes[DSA_SECRET_LENGTH];
    const WipeOnExit guard(bytes);
    if (const Status status = takeRandom(bytes, sizeof bytes)) return status;
    if (const Status status = bnImport(k, bytes, sizeof bytes)) return status;
    if (bnCompareWord(k, 0) == 0)
        if (const Status status = bnAddWord(k, k, SECRET_FOR_ZERO)) return status;
    return bnModulo(k, k, q);
}

} // namespace

Status dsaSign(const DsaKey& key, PairForm form, std::uint8_t* output, std::uint32_t* outputLength,
               const std::uint8_t* digest, std::uint32_t digestLength)
{
    if (!hasRoom(outputLength, pairCapacity(form, bnBitLength(key.p), bnBitLength(key.q))))
        return STATUS_BUFFER_TOO_SMALL;
    if (key.magic != DSA_PUBLIC_MAGIC) return PKA_E_KEY;
    BigNum k, inverse, h;
    if (const Status status = takeSecret(k, key.q)) return status;
    if (const Status status = bnModInverse(inverse, k, key.q)) return status;

    NumberPair signature;
    BigNum &r = signature.first, &s = signature.second;
    if (const Status status = bnModExp(r, key.g, k, key.p)) return status;
    if (const Status status = bnModulo(r, r, key.q)) return status;

    if (const Status status = bnImport(h, digest, digestLength)) return status;
    if (const Status status = bnMultiply(s, r, key.x)) return status;
    if (const Status status = bnAdd(s, s, h)) return status;
    if (const Status status = bnModMultiply(s, s, inverse, key.q)) return status;
    return writePair(signature, form, output, outputLength);
}

Status dsaVerify(const DsaKey& key, PairForm form, const std::uint8_t* signature, std::uint32_t signatureLength,
                 const std::uint8_t* digest, std::uint32_t digestLength)
{
    if (key.magic != DSA_PUBLIC_MAGIC) return PKA_E_KEY;
    NumberPair pair;
    if (!readPair(pair, form, signature, signatureLength)) return PKA_E_FAILED;
    const BigNum &r = pair.first, &s = pair.second;
    // No other numbers can belong to a signature.
    if (!isWithin(r, 1, key.q) || !isWithin(s, 1, key.q)) return PKA_E_FAILED;

    BigNum h, w, u1, u2, v;
    if (const Status status = bnImport(h, digest, digestLength)) return status;
    if (const Status status = bnModInverse(w, s, key.q)) return status;
    if (const Status status = bnModMultiply(u1, h, w, key.q)) return status;
    if (const Status status = bnModMultiply(u2, r, w, key.q)) return status;
    if (const Status status = bnModExpPair(v, key.g, u1, key.y, u2, key.p)) return status;
    if (const Status status = bnModulo(v, v, key.q)) return status;
    return bnCompare(v, r) == 0 ? STATUS_OK : PKA_E_FAILED;
}

} // namespace toolbelt
