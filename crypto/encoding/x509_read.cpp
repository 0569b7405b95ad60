// Reading a certificate (RFC 5280, section 4.1) into a record that points into the caller's bytes.
#include "crypto/encoding/der_cursor.h"
#include "crypto/encoding/x509.h"

namespace toolbelt {
namespace {

// Context tags of the parts behind the key.
enum TbsPart : std::int32_t
{
    TBS_VERSION = 0,
    TBS_ISSUER_UNIQUE_ID = 1,
    TBS_SUBJECT_UNIQUE_ID = 2,
    TBS_EXTENSIONS = 3,
};

Status takeAlgorithm(AlgorithmIdentifier& algorithm, DerCursor& input)
{
    return readAlgorithmIdentifier(algorithm, input.data, input.available, &input.data, &input.available);
}

Status takeName(NameList& name, DerCursor& input)
{
    return readName(name, input.data, input.available, &input.data, &input.available);
}

// The [0] element may be absent, which means version 1; any other context tag in its place is an error.
Status takeVersion(std::uint8_t& version, DerCursor& input)
{
    version = 1;
    DerElement tagged;
    DerCursor behind = input;
    if (const Status status = takeElement(tagged, behind)) return status;
    if (!isContextTag(tagged)) return STATUS_OK;
    if (contextTagNumber(tagged) != TBS_VERSION) return DER_E_LIMIT;

    DerElement number;
    DerCursor inside = contentOf(tagged);
    if (const Status status = takeElement(number, inside)) return status;
    if (number.contentLength > 1) return DER_E_LIMIT;
    if ((number.tag & 0x1F) != DER_INTEGER) return DER_E_TAG;
    if (number.contentLength == 1) version = static_cast<std::uint8_t>(number.content[0] + 1);
    input = behind;
    return STATUS_OK;
}

// Runs the three extension readers once over extensions that were just read. What they find is not used: malformed
// ones, and forms that the readers do not take, do not make a certificate unreadable.
void probeExtensions(const CertificateInfo& certificate)
{
    std::uint8_t isCa;
    std::int32_t pathLength;
    const std::uint8_t* keyId;
    std::uint32_t keyIdLength;
    (void)readBasicConstraints(certificate, &isCa, &pathLength);
    (void)readAuthorityKeyId(certificate, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    (void)readSubjectKeyId(certificate, &keyId, &keyIdLength);
}

// One of the optional parts. Their order is not judged, and of a part that is repeated the last one counts. The unique
// identifiers are expected as complete BIT STRING elements inside their context elements.
Status takeOptionalPart(CertificateInfo& certificate, DerCursor& input)
{
    DerElement tagged;
    if (const Status status = takeElement(tagged, input)) return status;
    DerCursor inside = contentOf(tagged);
    switch (contextTagNumber(tagged)) {
    case TBS_ISSUER_UNIQUE_ID:
        return readBitString(certificate.issuerUniqueId, inside.data, inside.available);
    case TBS_SUBJECT_UNIQUE_ID:
        return readBitString(certificate.subjectUniqueId, inside.data, inside.available);
    case TBS_EXTENSIONS:
        if (const Status status = takeElement(certificate.extensions, inside, DER_SEQUENCE)) return status;
        probeExtensions(certificate);
        return STATUS_OK;
    default: // another number, or no context tag
        return DER_E_LIMIT;
    }
}

Status readTbs(CertificateInfo& certificate, DerCursor& input)
{
    if (const Status status = takeElement(certificate.tbs, input)) return status;
    DerCursor inside = contentOf(certificate.tbs);
    if (const Status status = takeVersion(certificate.version, inside)) return status;
    if (const Status status = takeElement(certificate.serialNumber, inside, DER_INTEGER)) return status;
    if (const Status status = takeAlgorithm(certificate.signature, inside)) return status;
    if (const Status status = takeName(certificate.issuer, inside)) return status;
    if (const Status status =
            readValidity(certificate.validity, inside.data, inside.available, &inside.data, &inside.available))
        return status;
    if (const Status status = takeName(certificate.subject, inside)) return status;
    if (const Status status = readSubjectPublicKeyInfo(certificate.subjectPublicKeyInfo, inside.data, inside.available,
                                                       &inside.data, &inside.available))
        return status;
    while (inside.available != 0)
        if (const Status status = takeOptionalPart(certificate, inside)) return status;
    return STATUS_OK;
}

Status readWhole(CertificateInfo& certificate, DerCursor& input)
{
    if (const Status status = takeElement(certificate.outer, input)) return status;
    DerCursor inside = contentOf(certificate.outer);
    if (const Status status = readTbs(certificate, inside)) return status;
    if (const Status status = takeAlgorithm(certificate.signatureAlgorithm, inside)) return status;
    return readBitString(certificate.signatureValue, inside.data, inside.available);
}

} // namespace

Status readCertificate(CertificateInfo& certificate, const std::uint8_t* data, std::uint32_t available,
                       const std::uint8_t** rest, std::uint32_t* restLength)
{
    return readEmptied(readWhole, certificate, data, available, rest, restLength);
}

Status readTbsCertificate(CertificateInfo& certificate, const std::uint8_t* data, std::uint32_t available,
                          const std::uint8_t** rest, std::uint32_t* restLength)
{
    return readEmptied(readTbs, certificate, data, available, rest, restLength);
}

} // namespace toolbelt
