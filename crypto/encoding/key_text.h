// Public keys as text and as SubjectPublicKeyInfo (RFC 5280): PEM to key object, and the ssh-rsa blob.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/encoding/der.h"
#include "crypto/pka/pka.h"
#include "crypto/pka/rsa.h"

namespace toolbelt {

inline constexpr char PEM_PUBLIC_KEY_BEGIN[] = "-----BEGIN PUBLIC KEY-----";
// Four closing dashes by design: found by substring search, it ends blocks closed with four and with five.
inline constexpr char PEM_PUBLIC_KEY_END[] = "-----END PUBLIC KEY----";

struct SubjectPublicKeyInfo
{
    DerElement element;
    AlgorithmIdentifier algorithm;
    DerBitString key; // its content is the key
};

// Reads one; rest and restLength (optional) receive what follows it. What the record held before is released; on
// failure it is empty. DER_E_UNKNOWN_ALGORITHM when OidTable has no row for the algorithm.
[[nodiscard]] TB_API Status readSubjectPublicKeyInfo(SubjectPublicKeyInfo& info, const std::uint8_t* data,
                                                     std::uint32_t available, const std::uint8_t** rest = nullptr,
                                                     std::uint32_t* restLength = nullptr);
// Builds the key object that the algorithm's code selects; the caller deletes it. *key is left alone on failure:
// KEY_E_NO_READER when no class reads such keys, DER_E_MALFORMED when the key cannot be read; of DSA and ElGamal keys
// also DER_E_TAG when the parameters are no SEQUENCE, DER_E_NULL_PARAMETERS (DSA) and DER_E_MEMORY.
[[nodiscard]] TB_API Status readPublicKeyFromInfo(cPKA** key, const SubjectPublicKeyInfo& info);
// The whole path from a zero-terminated PEM text to a key object that the caller deletes; null when there is no
// readable key. status (optional) says why: TEXT_E_MALFORMED when no armoured block can be decoded, or a status of the
// two above.
[[nodiscard]] TB_API cPKA* readPemPublicKey(const char* text, Status* status = nullptr);
// RSAPublicKey from the BIT STRING's content into a new record, which the caller owns. PKA_E_KEY when the two numbers
// are malformed, beyond the limits of rsa_key.h or do not fill their SEQUENCE; *record is left alone on failure.
[[nodiscard]] TB_API Status readRsaPublicKey(RsaPublicKey** record, const SubjectPublicKeyInfo& info);
// The binary ssh-rsa blob (RFC 4253, section 6.6) of a public RSA key, by the key's own exportSsh.
[[nodiscard]] TB_API Status exportSshRsa(cPKA& key, std::uint8_t* output, std::uint32_t* inOutSize);

// One public-key algorithm code and how its keys are read. Each reader makes a key object that the caller deletes.
struct KeyReaderRow
{
    std::uint8_t publicKey;                                             // code of an OidTable row
    cPKA* (*fromBytes)(const std::uint8_t* blob, std::uint32_t length); // null when the blob cannot be read
    Status (*fromInfo)(cPKA** key, const SubjectPublicKeyInfo& info);
};

inline constexpr std::uint32_t KEY_READER_COUNT = 6;
// Searched from the last row to the first.
extern TB_API const KeyReaderRow keyReaders[KEY_READER_COUNT];

} // namespace toolbelt
