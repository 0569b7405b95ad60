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
    DerElement tbs;           // its start and total length are what the signature covers
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

// Reads a certificate, or the part of it that is signed; rest and restLength (optional) receive what follows it. What
// the record held before is released; on failure it is empty. DER_E_LIMIT when a rule of the structure is broken;
// statuses of DER and of key texts pass through. A key of a kind that no class reads does not make a certificate
// unreadable. Octets behind the signature, inside the outermost element, are not judged: no signature covers them.
[[nodiscard]] TB_API Status readCertificate(CertificateInfo& certificate, const std::uint8_t* data,
                                            std::uint32_t available, const std::uint8_t** rest = nullptr,
                                            std::uint32_t* restLength = nullptr);
[[nodiscard]] TB_API Status readTbsCertificate(CertificateInfo& certificate, const std::uint8_t* data,
                                               std::uint32_t available, const std::uint8_t** rest = nullptr,
                                               std::uint32_t* restLength = nullptr);

// Finds an extension by its dotted identifier: DER_E_NOT_FOUND when it is not there, DER_E_MALFORMED when it has no
// OCTET STRING. critical (optional) receives the BOOLEAN's octet, 0 when there is none. value points to the content of
// the OCTET STRING. Outputs are left alone on failure. A malformed extension in front of the one sought ends the
// search.
[[nodiscard]] TB_API Status findExtension(const CertificateInfo& certificate, const char* oidText,
                                          std::uint8_t* critical, const std::uint8_t** value,
                                          std::uint32_t* valueLength);

// The three readers below clear their outputs first and leave them so on failure; an extension that breaks a rule of
// its own gives DER_E_LIMIT, one whose elements are not what they should be the DER reader's statuses.

// isCa receives the BOOLEAN's octet, which must be there even when it says no: the empty SEQUENCE that other programs
// write for "no" gives DER_E_LENGTH, with isCa 0. pathLength is -1 when there is none. One that does not fit gives
// STATUS_BUFFER_TOO_SMALL, with isCa set and pathLength made from its first four octets.
[[nodiscard]] TB_API Status readBasicConstraints(const CertificateInfo& certificate, std::uint8_t* isCa,
                                                 std::int32_t* pathLength);
// All outputs are optional. keyId has 20 octets, or is null when the extension has none. issuerTag, issuer and
// issuerLength give the tag number and the content of the issuer's one general name (4: a distinguished name, as
// readName takes it); serialLow is the low 32 bits of the issuer certificate's serial number.
[[nodiscard]] TB_API Status readAuthorityKeyId(const CertificateInfo& certificate, const std::uint8_t** keyId,
                                               std::uint32_t* keyIdLength, std::int32_t* issuerTag,
                                               const std::uint8_t** issuer, std::uint32_t* issuerLength,
                                               std::uint32_t* serialLow);
// An identifier of 20 octets.
[[nodiscard]] TB_API Status readSubjectKeyId(const CertificateInfo& certificate, const std::uint8_t** keyId,
                                             std::uint32_t* keyIdLength);

// Hashes the signed part with the digest of that registry id (normally the one of signatureAlgorithm.row) and verifies
// the signature with the certificate's own key. *result (optional) is 1 for a valid signature and 0 otherwise, beside
// the status: that of readPublicKeyFromInfo when there is no usable key, which is judged first, of createHash when
// there is no such digest, DER_E_MEMORY, or that of the key's verifyDer. To check a certificate that another one
// signed, hash tbs and give the whole signatureValue element, from its start over its total length, to verifyDer of the
// issuer's key.
[[nodiscard]] TB_API Status verifyCertificateSignature(const CertificateInfo& certificate, std::int32_t digestId,
                                                       std::int32_t* result);

} // namespace toolbelt
