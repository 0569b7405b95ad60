// The flat surface: one step of a certificate chain.
#include <cstring>

#include "dll/c_support.h"

using namespace toolbelt;
using namespace toolbelt::flat;

namespace {

// One certificate with the bytes that it points into.
struct Certificate
{
    DerBytes bytes;
    CertificateInfo info;

    tb_status read(const void* data, std::uint32_t size)
    {
        if (const tb_status status =
                bytes.read(data, size, "-----BEGIN CERTIFICATE-----", "-----END CERTIFICATE-----", TB_E_CERTIFICATE))
            return status;
        std::uint32_t left = 0;
        const Status status = readCertificate(info, bytes.data(), bytes.size(), nullptr, &left);
        if (status == STATUS_OK && left != 0) return TB_E_CERTIFICATE;
        return readerStatus(status, TB_E_CERTIFICATE);
    }
};

// Attribute by attribute, octet by octet. Empty names are nobody's.
bool isSameName(const NameList& a, const NameList& b)
{
    const NameAttribute *x = a.head, *y = b.head;
    for (; x && y; x = x->next, y = y->next)
        if (std::strcmp(x->oid, y->oid) != 0 || x->valueLength != y->valueLength ||
            std::memcmp(x->value, y->value, x->valueLength) != 0)
            return false;
    return a.head && !x && !y;
}

bool mayIssue(const CertificateInfo& certificate)
{
    std::uint8_t isAuthority = 0;
    std::int32_t pathLength = 0;
    return readBasicConstraints(certificate, &isAuthority, &pathLength) == STATUS_OK && isAuthority != 0;
}

tb_status verify(const CertificateInfo& certificate, const SubjectPublicKeyInfo& issuerKey)
{
    // What is signed names the algorithm too, and nobody may change the name outside of it.
    if (std::strcmp(certificate.signature.oid.text, certificate.signatureAlgorithm.oid.text) != 0)
        return TB_E_CERTIFICATE;
    KeyOwner key;
    if (const tb_status status = publicKeyOf(key, issuerKey)) return status;
    std::uint8_t digest[MAX_DIGEST];
    std::uint32_t length = 0;
    if (const tb_status status = digestOf(digest, length, certificate.signatureAlgorithm.row->digest,
                                          certificate.tbs.start, certificate.tbs.totalLength))
        return status;
    const DerElement& signature = certificate.signatureValue.element;
    return readerStatus(key->verifyDer(signature.start, signature.totalLength, digest, length), TB_E_SIGNATURE);
}

tb_status judgeMoment(const DerValidity& validity, std::int64_t when)
{
    if (isTimeValid(validity, when)) return TB_OK;
    DerValidity endless = validity;
    endless.notAfter = {9999, 12, 31, 23, 59, 59};
    return isTimeValid(endless, when) ? TB_E_EXPIRED : TB_E_NOT_YET_VALID;
}

} // namespace

tb_status tb_certificate_check(const void* certificate, uint32_t length, const void* issuer, uint32_t issuer_length,
                               int64_t when) noexcept
{
    Certificate checked, other;
    if (const tb_status status = checked.read(certificate, length)) return status;
    if (issuer != nullptr) {
        if (const tb_status status = other.read(issuer, issuer_length)) return status;
    }
    const CertificateInfo& authority = issuer ? other.info : checked.info;
    if (!isSameName(checked.info.issuer, authority.subject) || (issuer && !mayIssue(authority))) return TB_E_ISSUER;
    if (const tb_status status = verify(checked.info, authority.subjectPublicKeyInfo)) return status;
    return judgeMoment(checked.info.validity, when);
}
