// RSA key records: lifetime, import, export, and the raw operations on them (RFC 8017). The key objects are in rsa.h.
//
// Limits of import. The modulus must be odd, above 1 and of at most PKA_MAX_KEY_BITS; the public exponent must be odd,
// at least 3 (with 1 every block would be its own signature), and not longer than goes with the modulus (below); no
// other number may be longer than PKA_MAX_KEY_BITS. A private key must be one that can be completed, too, and an even
// exponent fails there already (PKA_E_RANGE), while 1 meets the limit (PKA_E_KEY). Nothing else is tested: neither that
// the primes are prime nor that a public exponent has an inverse.
//
// Nothing here is protected against a watcher of its timing: private operations are not blinded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "crypto/base/export.h"
#include "crypto/bignum/bignum.h"
#include "crypto/encoding/der.h"
#include "crypto/pka/status.h"

namespace toolbelt {

// A public exponent has at most RSA_LONG_BITS, and with a modulus longer than that at most RSA_LONG_KEY_EXPONENT_BITS.
// A public operation then takes half a second at the worst; with modulus and exponent of PKA_MAX_KEY_BITS a hostile
// certificate would cost half a minute.
inline constexpr std::uint32_t RSA_LONG_BITS = 4096;
inline constexpr std::uint32_t RSA_LONG_KEY_EXPONENT_BITS = 64;

// The numbers of a record are allocated with it, and wiped and freed with it.
struct RsaPublicKey
{
    std::uint16_t bits = 0; // bit length of n
    BigNum* n = nullptr;    // modulus
    BigNum* e = nullptr;    // public exponent
    std::uint32_t reserved = 0;
};
static_assert(sizeof(void*) != 4 ||
              (sizeof(RsaPublicKey) == 16 && offsetof(RsaPublicKey, n) == 4 && offsetof(RsaPublicKey, reserved) == 12));

struct RsaPrivateKey
{
    std::uint16_t bits = 0; // bit length of n
    BigNum* n = nullptr;    // modulus p * q
    BigNum* e = nullptr;    // public exponent
    BigNum* d = nullptr;    // private exponent, e^-1 mod (p - 1)(q - 1)
    BigNum* p = nullptr;    // larger prime
    BigNum* q = nullptr;    // smaller prime
    BigNum* dp = nullptr;   // d mod (p - 1)
    BigNum* dq = nullptr;   // d mod (q - 1)
    BigNum* qinv = nullptr; // q^-1 mod p
};
static_assert(sizeof(void*) != 4 ||
              (sizeof(RsaPrivateKey) == 36 && offsetof(RsaPrivateKey, n) == 4 && offsetof(RsaPrivateKey, qinv) == 32));

// A new record, every number one zero limb; null when memory has run out.
[[nodiscard]] RsaPublicKey* newRsaPublicKey();
[[nodiscard]] RsaPrivateKey* newRsaPrivateKey();
// Wipes and frees a record with its numbers. Null is ignored.
TB_API void freeRsaKey(RsaPublicKey* key);
TB_API void freeRsaKey(RsaPrivateKey* key);

struct FreeRsaKey
{
    template <typename Key>
    void operator()(Key* key) const
    {
        freeRsaKey(key);
    }
};
using RsaPublicOwner = std::unique_ptr<RsaPublicKey, FreeRsaKey>;
using RsaPrivateOwner = std::unique_ptr<RsaPrivateKey, FreeRsaKey>;

// k, the size of the modulus in bytes.
inline std::uint32_t rsaLength(std::uint16_t bits)
{
    return (bits + 7u) / 8;
}

// Brings a record whose e, p and q are loaded to its invariants: p becomes the larger prime; d, qinv and n are kept
// when they are right and computed when they are not; bits, dp and dq are computed. PKA_E_RANGE when no such key
// exists, or when the lengths of the primes add up to more than PKA_MAX_KEY_BITS + 1, so that bits cannot overflow.
[[nodiscard]] Status completeRsaPrivate(RsaPrivateKey& key);

// ---- raw operations

// Form of a raw operation's input and output; the two bits may be combined. Clear means exactly k big-endian bytes.
enum RsaMode : std::uint32_t
{
    RSA_RAW = 0,
    RSA_PREFIXED_INPUT = 1,  // prefixed form, read from k + 2 bytes
    RSA_PREFIXED_OUTPUT = 2, // prefixed form, written into k + 2 bytes, zeros behind a shorter number
};

// Reads the number of a raw operation's input; PKA_E_RANGE when a prefixed number does not fit.
[[nodiscard]] Status readRsaInput(BigNum& number, const std::uint8_t* input, std::uint32_t k, std::uint32_t mode);
// output = input^e mod n. PKA_E_RANGE when a prefixed number does not fit. PKA_E_SHORT_INPUT, with the output written,
// when e is below 4097 and the input, taken modulo n, has fewer than (k / 3) * 2 bytes: such an input was not padded,
// and a root of the output might give it away. Input and output may be the same bytes.
[[nodiscard]] TB_API Status rsaPublicOperation(const RsaPublicKey& key, const std::uint8_t* input, std::uint8_t* output,
                                               std::uint32_t mode);
// output = input^d mod n, by the Chinese remainder theorem. An input of n and above is taken modulo n.
[[nodiscard]] TB_API Status rsaPrivateOperation(const RsaPrivateKey& key, const std::uint8_t* input,
                                                std::uint8_t* output, std::uint32_t mode);
// Whether the signature (RSA_RAW or RSA_PREFIXED_INPUT), a number below n, is that of a type 1 block around the digest,
// bare or in a DigestInfo of any algorithm: 0 or PKA_E_FAILED; PKA_E_OBJECT when the working buffer could not be had.
// It proves nothing when the public exponent is small (rsa_verify.cpp): such signatures can be made without the key.
[[nodiscard]] Status rsaVerify(const RsaPublicKey& key, const std::uint8_t* signature, std::uint32_t mode,
                               const std::uint8_t* digest, std::uint32_t digestLength);

// ---- import: PKA_E_KEY when numbers cannot be read or are beyond the limits, PKA_E_MEMORY when there is no room for
// the record; on failure *key is left alone. What follows the last number of a blob is not looked at.

// n, e as prefixed numbers.
[[nodiscard]] TB_API Status importRsaPublic(RsaPublicKey** key, const std::uint8_t* blob, std::uint32_t length);
// n, e; and d, q, p, qinv, the primes in either order. The record is completed, so that numbers that contradict the
// primes are mended; the status of a failed completion is returned.
[[nodiscard]] TB_API Status importRsaPrivate(RsaPrivateKey** key, const std::uint8_t* publicBlob,
                                             std::uint32_t publicLength, const std::uint8_t* privateBlob,
                                             std::uint32_t privateLength);
// The same with all six numbers in one blob: n, e, d, q, p, qinv.
[[nodiscard]] Status importRsaPrivateBlob(RsaPrivateKey** key, const std::uint8_t* blob, std::uint32_t length);
// RSAPublicKey: a SEQUENCE of n and e that they fill exactly.
[[nodiscard]] TB_API Status importRsaPublicDer(RsaPublicKey** key, const DerElement& sequence);
// RSAPrivateKey of RFC 8017, appendix A.1.2 (version 0), filled exactly by its nine numbers; completed like a blob.
[[nodiscard]] Status importRsaPrivateDer(RsaPrivateKey** key, const DerElement& sequence);

// ---- export: *inOutSize is the capacity and becomes the length; STATUS_BUFFER_TOO_SMALL with the size needed.

// n, e as prefixed numbers; PKA_E_RANGE when a number cannot be written.
[[nodiscard]] TB_API Status exportRsaPublic(const RsaPublicKey& key, std::uint8_t* output, std::uint32_t* inOutSize);
// d, q, p, qinv, the order of an OpenPGP secret key, whose last number is the inverse of its first prime.
[[nodiscard]] TB_API Status exportRsaPrivate(const RsaPrivateKey& key, std::uint8_t* output, std::uint32_t* inOutSize);
// RSAPublicKey and RSAPrivateKey of RFC 8017, appendix A.1; PKA_E_HEADER when an element cannot be written.
[[nodiscard]] Status exportRsaPublicDer(const RsaPublicKey& key, std::uint8_t* output, std::uint32_t* inOutSize);
[[nodiscard]] Status exportRsaPrivateDer(const RsaPrivateKey& key, std::uint8_t* output, std::uint32_t* inOutSize);
// The binary ssh-rsa blob (RFC 4253, section 6.6); a zero is written as one zero byte.
[[nodiscard]] Status exportRsaSsh(const RsaPublicKey& key, std::uint8_t* output, std::uint32_t* inOutSize);

} // namespace toolbelt
