// ElGamal key records: lifetime, import, export, the operations and generation. The key objects are in elgamal.h.
//
// Limits of import. p is odd, above 1 and of at most PKA_MAX_KEY_BITS; g lies in 2..p-1, y in 1..p-1 (0 in a private
// key: it is computed when it is needed) and x in 1..p-1; the fourth number is not longer than PKA_MAX_KEY_BITS.
// Nothing else is tested: neither that p is prime nor what g generates.
//
// Operations take plain numbers: nothing is padded, and a message of p and above comes back modulo p. Each takes as
// many bytes from the random pool (random_pool.h) as p has. Nothing is protected against a watcher of its timing.
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
inline constexpr std::uint32_t ELGAMAL_PUBLIC_MAGIC = 0x456C4750;  // "ElGP"
inline constexpr std::uint32_t ELGAMAL_PRIVATE_MAGIC = 0x456C4753; // "ElGS"

struct ElgamalKey : HeapObject
{
    std::uint32_t magic = ELGAMAL_PUBLIC_MAGIC;
    BigNum p; // prime modulus
    BigNum g; // generator
    BigNum y; // public value, g^x mod p
    // The optional third domain parameter of a SubjectPublicKeyInfo: the order of a subgroup (X9.42) or the length of
    // the private value (PKCS #3). Zero elsewhere; no operation uses it.
    BigNum fourth;
    BigNum x; // private exponent; empty in the public form
};
static_assert(sizeof(void*) != 4 ||
              (sizeof(ElgamalKey) == 64 && offsetof(ElgamalKey, magic) == 0 && offsetof(ElgamalKey, p) == 4 &&
               offsetof(ElgamalKey, g) == 16 && offsetof(ElgamalKey, y) == 28 && offsetof(ElgamalKey, fourth) == 40 &&
               offsetof(ElgamalKey, x) == 52));
using ElgamalOwner = std::unique_ptr<ElgamalKey>;

// A new record, the fourth number one zero limb and the others empty; null when memory has run out. `delete` frees it,
// its numbers wiped.
[[nodiscard]] ElgamalKey* newElgamalKey(std::uint32_t magic);
// k, the size of p in bytes.
std::int32_t elgamalKeyLength(const ElgamalKey& key);

inline constexpr std::uint32_t ELGAMAL_MAX_SIGNATURE_BITS = 65535; // each of r and s

// ---- operations. STATUS_BUFFER_TOO_SMALL with the capacity demanded; PKA_E_KEY for a record with another mark than
// the operation's; PKA_E_RANDOM; PKA_E_FAILED; or the status of the arithmetic. Outputs are written on success only.

// (a, b) for the message, a number of any length. Public mark.
[[nodiscard]] Status elgamalEncrypt(const ElgamalKey& key, PairForm form, std::uint8_t* output,
                                    std::uint32_t* outputLength, const std::uint8_t* message,
                                    std::uint32_t messageLength);
// k bytes from a prefixed (a, b). Private mark.
[[nodiscard]] Status elgamalDecrypt(const ElgamalKey& key, std::uint8_t* output, std::uint32_t* outputLength,
                                    const std::uint8_t* cipher, std::uint32_t cipherLength);
// A prefixed (r, s) for the digest, a number of any length. Private mark.
[[nodiscard]] Status elgamalSign(const ElgamalKey& key, std::uint8_t* output, std::uint32_t* outputLength,
                                 const std::uint8_t* digest, std::uint32_t digestLength);
// 0 for a valid signature. Public mark. r and s longer than a prefixed number are refused in DER too, which bounds
// their work (that of the digest is the caller's to bound); beyond that their range is not tested, by design: a
// signature shows no more than that the equation holds.
[[nodiscard]] Status elgamalVerify(const ElgamalKey& key, PairForm form, const std::uint8_t* signature,
                                   std::uint32_t signatureLength, const std::uint8_t* digest,
                                   std::uint32_t digestLength);
// y = g^x mod p in a private record that does not hold it yet.
[[nodiscard]] Status ensureElgamalPublicValue(ElgamalKey& key);

// ---- import: PKA_E_KEY when numbers cannot be read or are beyond the limits, PKA_E_MEMORY when there is no room for
// the record; on failure *key is left alone. What follows the last number of a blob is not looked at.

// p, g, y as prefixed numbers.
[[nodiscard]] TB_API Status importElgamalPublic(ElgamalKey** key, const std::uint8_t* blob, std::uint32_t length);
// p, g, y; and x.
[[nodiscard]] TB_API Status importElgamalPrivate(ElgamalKey** key, const std::uint8_t* publicBlob,
                                                 std::uint32_t publicLength, const std::uint8_t* privateBlob,
                                                 std::uint32_t privateLength);
// The same with all four numbers in one blob.
[[nodiscard]] Status importElgamalPrivateBlob(ElgamalKey** key, const std::uint8_t* blob, std::uint32_t length);
// From the parts of a SubjectPublicKeyInfo: parameters a SEQUENCE of p, g and an optional third INTEGER (what follows
// it is not looked at), and the key an INTEGER y. DER_E_TAG (parameters of another kind, or none), DER_E_MEMORY, or
// DER_E_MALFORMED.
[[nodiscard]] Status importElgamalPublicInfo(ElgamalKey** key, const DerElement& parameters, const DerElement& bits);
// The library's own form: a SEQUENCE of the version 0 and p, g, y, x.
[[nodiscard]] Status importElgamalPrivateDer(ElgamalKey** key, const DerElement& sequence);

// ---- export: *inOutSize is the capacity and becomes the length; STATUS_BUFFER_TOO_SMALL with the size needed.
// PKA_E_HEADER when an element cannot be written.

// SubjectPublicKeyInfo: a Diffie-Hellman key by PKCS #3, or by X9.42 when the fourth number is the order of a subgroup.
[[nodiscard]] Status exportElgamalPublicDer(const ElgamalKey& key, std::uint8_t* output, std::uint32_t* inOutSize);
// The form of importElgamalPrivateDer. PKA_E_HEADER also for a record without the private mark. A missing y is
// computed.
[[nodiscard]] Status exportElgamalPrivateDer(ElgamalKey& key, std::uint8_t* output, std::uint32_t* inOutSize);

// ---- generation

inline constexpr std::uint32_t ELGAMAL_MIN_BITS = 128;
// The start of p, and 64 bits more than p has for x.
constexpr std::uint32_t elgamalSeedLength(std::uint32_t bits)
{
    return bits / 8 + bits / 8 + 8;
}

// Makes a private key with a safe prime p of that many bits (ELGAMAL_MIN_BITS to PKA_MAX_KEY_BITS, a multiple of 8;
// PKA_E_LENGTH otherwise) from elgamalSeedLength(bits) random bytes. g, at least 3, generates the whole group, and
// neither g nor its inverse divides p - 1, which would let signatures be forged (Bleichenbacher, 1996). The sink (may
// be null) hears "Generates prime table\n" when there is no table, "Finds prime P\n" with bits, and what the prime
// search reports; a reply other than 0 ends the work and is returned. *key is written on success only. seed is written
// to; the caller wipes it.
[[nodiscard]] TB_API Status generateElgamal(ElgamalKey** key, std::uint32_t bits, std::uint8_t* seed,
                                            std::uint32_t seedLength, ProgressSink* sink);

} // namespace toolbelt
