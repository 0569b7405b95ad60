// DSA key records (FIPS 186): lifetime, import, export, signing, verification and generation. The key objects are in
// dsa.h.
//
// Limits of import. p is odd and of at most PKA_MAX_KEY_BITS; q is odd, above 1, below p and of at most DSA_MAX_Q_BITS;
// g lies in 2..p-1, y in 1..p-1 (0 in a private key: it is computed when it is needed) and x in 1..q-1. Nothing else is
// tested: neither that p and q are prime nor that q is the order of g.
//
// A signature's secret comes from the random pool (random_pool.h). It is taken from 20 bytes whatever the length of q:
// with a q of more than 160 bits the secrets do not cover its range, and many signatures give the private key away.
// Sign with a q of 160 bits. Nothing here is protected against a watcher of its timing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "crypto/base/export.h"
#include "crypto/base/heap.h"
#include "crypto/bignum/bignum.h"
#include "crypto/bignum/primes.h"
#include "crypto/encoding/der.h"
#include "crypto/pka/number_pair.h"
#include "crypto/pka/status.h"

namespace toolbelt {

// Marks of a record's form.
inline constexpr std::uint32_t DSA_PUBLIC_MAGIC = 0x44534150;  // "DSAP"
inline constexpr std::uint32_t DSA_PRIVATE_MAGIC = 0x44534153; // "DSAS"

// Bytes of a digest that a signature is made for, and of the random pool that it takes.
inline constexpr std::uint32_t DSA_DIGEST_LENGTH = 20;
inline constexpr std::uint32_t DSA_SECRET_LENGTH = 20;
// Longer than any q in use, and short enough that verification with a p of PKA_MAX_KEY_BITS takes no more than some
// seconds.
inline constexpr std::uint32_t DSA_MAX_Q_BITS = 512;

struct DsaKey : HeapObject
{
    std::uint32_t magic = DSA_PUBLIC_MAGIC;
    std::uint32_t reserved = 0;
    BigNum p; // prime modulus
    BigNum g; // generator
    BigNum q; // prime order of g
    BigNum y; // public value, g^x mod p
    BigNum x; // private value; empty in the public form
};
static_assert(sizeof(void*) != 4 ||
              (sizeof(DsaKey) == 68 && offsetof(DsaKey, magic) == 0 && offsetof(DsaKey, p) == 8 &&
               offsetof(DsaKey, g) == 20 && offsetof(DsaKey, q) == 32 && offsetof(DsaKey, x) == 56));
using DsaOwner = std::unique_ptr<DsaKey>;

// A new record, every number empty; null when memory has run out. `delete` frees it, its numbers wiped.
[[nodiscard]] DsaKey* newDsaKey(std::uint32_t magic);
// Size of p in bytes; 0 for a record with neither mark.
std::int32_t dsaKeyLength(const DsaKey& key);

// ---- operations

// Signs the digest, taken whole as a number. STATUS_BUFFER_TOO_SMALL with the capacity demanded; PKA_E_KEY for a record
// without the public mark (x is read all the same: cPrivateDSA lends its numbers to a record that has it);
// PKA_E_RANDOM; or the status of the arithmetic. A secret of 0 is replaced by a fixed one, and r and s are not tested,
// by design.
[[nodiscard]] Status dsaSign(const DsaKey& key, PairForm form, std::uint8_t* output, std::uint32_t* outputLength,
                             const std::uint8_t* digest, std::uint32_t digestLength);
// 0 for a valid signature. PKA_E_KEY for a record without the public mark; PKA_E_FAILED when the signature cannot be
// read, when r or s is 0 or not below q, and when it is not that of the digest; or the status of the arithmetic.
[[nodiscard]] Status dsaVerify(const DsaKey& key, PairForm form, const std::uint8_t* signature,
                               std::uint32_t signatureLength, const std::uint8_t* digest, std::uint32_t digestLength);
// y = g^x mod p in a private record that does not hold it yet.
[[nodiscard]] Status ensureDsaPublicValue(DsaKey& key);

// ---- import: PKA_E_KEY when numbers cannot be read or are beyond the limits, PKA_E_MEMORY when there is no room for
// the record; on failure *key is left alone. What follows the last number of a blob is not looked at.

// p, q, g, y as prefixed numbers.
[[nodiscard]] TB_API Status importDsaPublic(DsaKey** key, const std::uint8_t* blob, std::uint32_t length);
// p, q, g, y; and x.
[[nodiscard]] TB_API Status importDsaPrivate(DsaKey** key, const std::uint8_t* publicBlob, std::uint32_t publicLength,
                                             const std::uint8_t* privateBlob, std::uint32_t privateLength);
// The same with all five numbers in one blob.
[[nodiscard]] Status importDsaPrivateBlob(DsaKey** key, const std::uint8_t* blob, std::uint32_t length);
// From the parts of a SubjectPublicKeyInfo: parameters a SEQUENCE of p, q, g, and the key an INTEGER y.
// DER_E_NULL_PARAMETERS, DER_E_TAG (parameters of another kind, or none), DER_E_MEMORY, or DER_E_MALFORMED.
[[nodiscard]] Status importDsaPublicInfo(DsaKey** key, const DerElement& parameters, const DerElement& bits);
// The traditional private key: a SEQUENCE of the version 0 and p, q, g, y, x.
[[nodiscard]] Status importDsaPrivateDer(DsaKey** key, const DerElement& sequence);

// ---- export: *inOutSize is the capacity and becomes the length; STATUS_BUFFER_TOO_SMALL with the size needed.
// PKA_E_HEADER when an element cannot be written.

// SubjectPublicKeyInfo.
[[nodiscard]] Status exportDsaPublicDer(const DsaKey& key, std::uint8_t* output, std::uint32_t* inOutSize);
// The form of importDsaPrivateDer. PKA_E_HEADER also for a record without the private mark. A missing y is computed.
[[nodiscard]] Status exportDsaPrivateDer(DsaKey& key, std::uint8_t* output, std::uint32_t* inOutSize);

// ---- generation (FIPS 186-4: A.1.1.2 with SHA-1, A.2.1, B.1.1). The standard pairs a q of 160 bits with a p of 1,024;
// other lengths follow the same steps.

inline constexpr std::uint32_t DSA_DOMAIN_SEED_LENGTH = 20;
// The domain's seed, and 64 bits more than q has for x.
inline constexpr std::uint32_t DSA_SEED_LENGTH = DSA_DOMAIN_SEED_LENGTH + 28;
inline constexpr std::uint32_t DSA_MIN_BITS = 512;

// Makes a private key with a p of that many bits (DSA_MIN_BITS to PKA_MAX_KEY_BITS, a multiple of 64; PKA_E_LENGTH
// otherwise) and a q of 160, from DSA_SEED_LENGTH random bytes. The first 20 are counted up until they give a domain,
// and are then the domain_parameter_seed it came from; the others become x, and the caller wipes them.
// The sink (may be null) hears "Generates prime table\n" when there is no table, "Finds prime Q\n" with 160, "Finds
// prime P\n" with bits, and the status of the probable-prime test of each tested candidate; a reply other than 0 ends
// the work and is returned. *key is written on success only.
[[nodiscard]] TB_API Status generateDsa(DsaKey** key, std::uint32_t bits, std::uint8_t* seed, std::uint32_t seedLength,
                                        ProgressSink* sink);

} // namespace toolbelt
