// X.509 certificates (RFC 5280): read without copying, asked about three extensions, checked against a moment and
// against a public key. The record's pointers lie inside the caller's bytes, which must outlive it.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/encoding/der.h"
#include "crypto/encoding/key_text.h"

namespace toolbelt {

inline constexpr char OID_SUBJECT_KEY_ID[] = "2.5.29.14";
inline constexpr char OID_BASIC_CONSTRAINTS[] = "2.5.29.19";
inline constexpr char OID_AUTHORITY_KEY_ID[] = "2.5.29.35";

struct CertificateInfo
{
    DerElement outer;
    DerElement tbs; // its start and total length are what the signature covers
    std::uint8_t version = 0; // 1, or the encoded number + 1
    DerElement serialNumber;
    AlgorithmIdentifier signature;
    NameList issuer;
    DerValidity validity;
    NameList subject;
    SubjectPublicKeyInfo subjectPublicKeyInfo;
    DerBitString issuerUniqueId;
    DerBitString subjectUniqueId;
    DerElement extensions; // content null when there are none
    AlgorithmIdentifier signatureAlgorithm;
    DerBitString signatureValue;
};

// Reads a certificate; rest and restLength (optional) receive what follows it. Statuses of DER and key texts pass through.
[[nodiscard]] TB_API Status readCertificate(CertificateInfo& certificate, const std::uint8_t* data, std::uint32_t available,
                                            const std::uint8_t** rest = nullptr, std::uint32_t* restLength = nullptr);
[[nodiscard]] TB_API Status readTbsCertificate(CertificateInfo& certificate, const std::uint8_t* data,
                                               std::uint32_t available, const std::uint8_t** rest = nullptr,
                                               std::uint32_t* restLength = nullptr);

// Finds an extension by its dotted identifier: DER_E_NOT_FOUND when it is not there. critical (optional) receives the
// BOOLEAN's octet when there is one. value points to the content of the extension's OCTET STRING.
[[nodiscard]] TB_API Status findExtension(const CertificateInfo& certificate, const char* oidText, std::uint8_t* critical,
                                          const std::uint8_t** value, std::uint32_t* valueLength);
// pathLength is -1 when there is none.
[[nodiscard]] TB_API Status readBasicConstraints(const CertificateInfo& certificate, std::uint8_t* isCa,
                                                 std::int32_t* pathLength);
// Outputs are optional and cleared first. issuerTag, issuer and issuerLength describe the general name of the issuer;
// serialLow is the low 32 bits of its serial number.
[[nodiscard]] TB_API Status readAuthorityKeyId(const CertificateInfo& certificate, const std::uint8_t** keyId,
                                               std::uint32_t* keyIdLength, std::int32_t* issuerTag,
                                               const std::uint8_t** issuer, std::uint32_t* issuerLength,
                                               std::uint32_t* serialLow);
[[nodiscard]] TB_API Status readSubjectKeyId(const CertificateInfo& certificate, const std::uint8_t** keyId,
                                             std::uint32_t* keyIdLength);

// Hashes the signed part with the digest of that registry id and verifies the signature with the certificate's own key.
// *result (optional) is 1 for a valid signature and 0 otherwise, whatever the status says. To check a certificate that
// another one signed, hash tbs and give the whole signatureValue element to verifyDer of the issuer's key.
[[nodiscard]] TB_API Status verifyCertificateSignature(const CertificateInfo& certificate, std::int32_t digestId,
                                                       std::int32_t* result);

} // namespace toolbelt
