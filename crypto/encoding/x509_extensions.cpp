// The extensions that the library answers questions about (RFC 5280, section 4.2.1): subject and authority key
// identifier, basic constraints. Outputs are cleared first and written when a value has been read whole, so that a
// malformed extension never answers in part.
#include <cstring>

#include "crypto/encoding/der_cursor.h"
#include "crypto/encoding/x509.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t KEY_ID_LENGTH = 20; // a SHA-1 digest

// Context tags of AuthorityKeyIdentifier.
enum AuthorityKeyIdPart : std::int32_t
{
    AKI_KEY_ID = 0,
    AKI_ISSUER = 1,
    AKI_SERIAL = 2,
};

struct KeyId
{
    const std::uint8_t* octets = nullptr;
    std::uint32_t length = 0;
};

// A key identifier of 20 octets, bare or as an OCTET STRING. Longer digests are not taken.
Status readKeyId(KeyId& keyId, const std::uint8_t* value, std::uint32_t length)
{
    const bool wrapped = length == KEY_ID_LENGTH + 2 && value[0] == DER_OCTET_STRING && value[1] == KEY_ID_LENGTH;
    if (!wrapped && length != KEY_ID_LENGTH) return DER_E_LIMIT;
    keyId = {value + (length - KEY_ID_LENGTH), KEY_ID_LENGTH};
    return STATUS_OK;
}

// The extension's value, which must be a SEQUENCE by its whole identifier octet.
Status openExtension(DerCursor& inside, const CertificateInfo& certificate, const char* oidText)
{
    DerCursor value{};
    if (const Status status = findExtension(certificate, oidText, nullptr, &value.data, &value.available))
        return status;
    DerElement sequence;
    if (const Status status = takeElement(sequence, value)) return status;
    if (sequence.tag != DER_CONSTRUCTED_SEQUENCE) return DER_E_TAG;
    inside = contentOf(sequence);
    return STATUS_OK;
}

// What follows the identifier of an extension: a BOOLEAN that may be absent, and the OCTET STRING that holds the value.
Status readExtensionValue(std::uint8_t& critical, DerElement& value, DerCursor input)
{
    critical = 0;
    if (input.available == 0) return DER_E_MALFORMED;
    if (const Status status = takeElement(value, input)) return status;
    if (value.tag == DER_BOOLEAN) {
        if (value.contentLength == 0 || input.available == 0) return DER_E_MALFORMED;
        critical = value.content[0];
        if (const Status status = takeElement(value, input)) return status;
    }
    return value.tag == DER_OCTET_STRING ? STATUS_OK : DER_E_MALFORMED;
}

struct AuthorityKeyId
{
    KeyId keyId;
    std::int32_t issuerTag = 0;
    const std::uint8_t* issuer = nullptr;
    std::uint32_t issuerLength = 0;
    std::uint32_t serialLow = 0;
};

// One general name that fills its element.
Status readIssuer(AuthorityKeyId& found, DerCursor inside)
{
    DerElement name;
    if (const Status status = takeElement(name, inside)) return status;
    if (!isContextTag(name) || inside.available != 0) return DER_E_LIMIT;
    found.issuerTag = contextTagNumber(name);
    found.issuer = name.content;
    found.issuerLength = name.contentLength;
    return STATUS_OK;
}

Status takeAuthorityPart(AuthorityKeyId& found, DerCursor& input)
{
    DerElement part;
    if (const Status status = takeElement(part, input)) return status;
    switch (contextTagNumber(part)) {
    case AKI_KEY_ID:
        return readKeyId(found.keyId, part.content, part.contentLength);
    case AKI_ISSUER:
        return readIssuer(found, contentOf(part));
    case AKI_SERIAL: {
        std::uint32_t low = 0;
        for (std::uint32_t i = 0; i < part.contentLength; ++i) low = low << 8 | part.content[i]; // keeps the last four
        found.serialLow += low;
        return STATUS_OK;
    }
    default: // another number, or no context tag
        return DER_E_LIMIT;
    }
}

template <typename Value, typename Source>
void store(Value* output, Source value)
{
    if (output) *output = value;
}

} // namespace

Status findExtension(const CertificateInfo& certificate, const char* oidText, std::uint8_t* critical,
                     const std::uint8_t** value, std::uint32_t* valueLength)
{
    DerCursor input = contentOf(certificate.extensions);
    while (input.available != 0) {
        DerElement extension;
        if (const Status status = takeElement(extension, input, DER_SEQUENCE)) return status;
        OidRecord oid;
        DerCursor inside = contentOf(extension);
        if (const Status status = readOid(oid, inside.data, inside.available, &inside.data, &inside.available))
            return status;
        if (std::strcmp(oid.text, oidText) != 0) continue;

        std::uint8_t flag;
        DerElement octets;
        if (const Status status = readExtensionValue(flag, octets, inside)) return status;
        store(critical, flag);
        *value = octets.content;
        *valueLength = octets.contentLength;
        return STATUS_OK;
    }
    return DER_E_NOT_FOUND;
}

Status readBasicConstraints(const CertificateInfo& certificate, std::uint8_t* isCa, std::int32_t* pathLength)
{
    *isCa = 0;
    *pathLength = -1;
    DerCursor inside{};
    if (const Status status = openExtension(inside, certificate, OID_BASIC_CONSTRAINTS)) return status;
    DerElement ca;
    if (const Status status = takeElement(ca, inside, DER_BOOLEAN)) return status;
    if (ca.contentLength == 0) return DER_E_MALFORMED;

    std::int32_t length = -1;
    Status overflow = STATUS_OK;
    if (inside.available != 0) {
        DerElement integer;
        if (const Status status = takeElement(integer, inside, DER_INTEGER)) return status;
        std::uint32_t number = 0;
        overflow = readSmallInteger(integer, &number);
        if (overflow == STATUS_OK && inside.available != 0) return DER_E_LIMIT;
        length = static_cast<std::int32_t>(number);
        // A length that would show as negative must not pass for "none".
        if (length < 0) overflow = STATUS_BUFFER_TOO_SMALL;
    }
    *isCa = ca.content[0];
    *pathLength = length;
    return overflow;
}

Status readAuthorityKeyId(const CertificateInfo& certificate, const std::uint8_t** keyId, std::uint32_t* keyIdLength,
                          std::int32_t* issuerTag, const std::uint8_t** issuer, std::uint32_t* issuerLength,
                          std::uint32_t* serialLow)
{
    AuthorityKeyId found;
    DerCursor inside{};
    Status status = openExtension(inside, certificate, OID_AUTHORITY_KEY_ID);
    while (status == STATUS_OK && inside.available != 0) status = takeAuthorityPart(found, inside);
    if (status != STATUS_OK) found = {};
    store(keyId, found.keyId.octets);
    store(keyIdLength, found.keyId.length);
    store(issuerTag, found.issuerTag);
    store(issuer, found.issuer);
    store(issuerLength, found.issuerLength);
    store(serialLow, found.serialLow);
    return status;
}

Status readSubjectKeyId(const CertificateInfo& certificate, const std::uint8_t** keyId, std::uint32_t* keyIdLength)
{
    KeyId found;
    const std::uint8_t* value = nullptr;
    std::uint32_t length = 0;
    Status status = findExtension(certificate, OID_SUBJECT_KEY_ID, nullptr, &value, &length);
    if (status == STATUS_OK) status = readKeyId(found, value, length);
    *keyId = found.octets;
    *keyIdLength = found.length;
    return status;
}

} // namespace toolbelt
