// cert show: the extensions of a certificate as text, those that the library reads and a few that it does not.
#include <set>

#include "cli/cert_text.h"
#include "cli/key_facts.h"
#include "cli/text.h"

namespace toolbelt::cli {
namespace {

// An extension's value, which a reader of the library or of this file takes apart.
struct Extension
{
    std::string oid;
    bool critical = false;
    const std::uint8_t* value = nullptr;
    std::uint32_t length = 0;
};

// The elements of a SEQUENCE that fills the value; false when it is not one.
bool readSequence(std::vector<DerElement>& elements, const Extension& extension)
{
    DerElement sequence;
    std::uint32_t left = 0;
    const Status status =
        parseElement(sequence, extension.value, extension.length, nullptr, &left, DER_CONSTRUCTED_SEQUENCE);
    return status == STATUS_OK && left == 0 && readElements(elements, sequence);
}

void append(std::string& list, const std::string& item)
{
    list += (list.empty() ? "" : ", ") + item;
}

std::string keyUsageText(const Extension& extension)
{
    constexpr const char* names[] = {"digital signature", "non-repudiation", "key encipherment",
                                     "data encipherment", "key agreement",   "certificate signing",
                                     "CRL signing",       "encipher only",   "decipher only"};
    DerBitString bits;
    if (readBitString(bits, extension.value, extension.length) != STATUS_OK) return {};
    std::string text;
    for (std::uint32_t i = 0; i < std::size(names) && i / 8 < bits.element.contentLength; ++i)
        if (bits.element.content[i / 8] & (0x80 >> i % 8)) append(text, names[i]);
    return text;
}

std::string extendedKeyUsageText(const Extension& extension)
{
    std::vector<DerElement> elements;
    if (!readSequence(elements, extension)) return {};
    std::string text;
    for (const DerElement& element : elements) {
        OidRecord oid;
        if (readOid(oid, element.start, element.totalLength) != STATUS_OK) return {};
        append(text, oidName(oid.text));
    }
    return text;
}

std::string addressText(const DerElement& address)
{
    std::string text;
    if (address.contentLength == 4)
        for (std::uint32_t i = 0; i < 4; ++i) text += (i ? "." : "") + std::to_string(address.content[i]);
    else
        for (std::uint32_t i = 0; i < address.contentLength; i += 2)
            text += (i ? ":" : "") + toHex(address.content + i, std::min(address.contentLength - i, 2u));
    return text;
}

std::string generalNameText(const DerElement& name)
{
    const std::string text = readable(name.content, name.contentLength, Charset::utf8, ",");
    DerElement directoryName;
    switch (name.tag) {
    case 0x81:
        return "mail " + text;
    case 0x82:
        return "DNS " + text;
    case 0x86:
        return "URI " + text;
    case 0x87:
        return "address " + addressText(name);
    case 0xA4:
        if (parseElement(directoryName, name.content, name.contentLength) != STATUS_OK) break;
        return "name " + nameText(directoryName);
    }
    return "[" + std::to_string(name.tag & 31) + "] " + octetsText(name);
}

std::string alternativeNamesText(const Extension& extension)
{
    std::vector<DerElement> elements;
    if (!readSequence(elements, extension)) return {};
    std::string text;
    for (const DerElement& element : elements) append(text, generalNameText(element));
    return text;
}

std::string basicConstraintsText(const CertificateInfo& certificate, const Extension& extension)
{
    // The library's reader wants the CA flag to be written out; most certificates of no CA leave it to its default.
    if (extension.length == 2 && extension.value[0] == DER_CONSTRUCTED_SEQUENCE && extension.value[1] == 0)
        return "not a CA";
    std::uint8_t isCa = 0;
    std::int32_t pathLength = -1;
    if (readBasicConstraints(certificate, &isCa, &pathLength) != STATUS_OK) return {};
    return std::string(isCa ? "CA" : "not a CA") +
           (pathLength >= 0 ? ", path length " + std::to_string(pathLength) : "");
}

std::string subjectKeyIdText(const CertificateInfo& certificate)
{
    const std::uint8_t* id = nullptr;
    std::uint32_t length = 0;
    return readSubjectKeyId(certificate, &id, &length) == STATUS_OK ? toHex(id, length) : "";
}

// Empty when there is more in it than a key identifier: the octets then tell all.
std::string authorityKeyIdText(const CertificateInfo& certificate)
{
    const std::uint8_t *id = nullptr, *issuer = nullptr;
    std::uint32_t length = 0, issuerLength = 0;
    std::int32_t issuerTag = 0;
    const Status status = readAuthorityKeyId(certificate, &id, &length, &issuerTag, &issuer, &issuerLength, nullptr);
    return status == STATUS_OK && id && !issuer ? toHex(id, length) : "";
}

// Empty when there is no reader for it, or it could not be read.
std::string extensionText(const CertificateInfo& certificate, const Extension& extension)
{
    if (extension.oid == OID_BASIC_CONSTRAINTS) return basicConstraintsText(certificate, extension);
    if (extension.oid == OID_SUBJECT_KEY_ID) return subjectKeyIdText(certificate);
    if (extension.oid == OID_AUTHORITY_KEY_ID) return authorityKeyIdText(certificate);
    if (extension.oid == "2.5.29.15") return keyUsageText(extension);
    if (extension.oid == "2.5.29.37") return extendedKeyUsageText(extension);
    if (extension.oid == "2.5.29.17" || extension.oid == "2.5.29.18") return alternativeNamesText(extension);
    return {};
}

// Extension: identifier, BOOLEAN when critical, OCTET STRING.
bool readExtension(Extension& extension, const DerElement& element)
{
    const std::uint8_t* at = element.content;
    std::uint32_t left = element.contentLength;
    OidRecord oid;
    DerElement part;
    if (readOid(oid, at, left, &at, &left) != STATUS_OK) return false;
    extension.oid = oid.text;
    if (parseElement(part, at, left, &at, &left) != STATUS_OK) return false;
    if (part.tag == DER_BOOLEAN) {
        extension.critical = part.contentLength != 0 && part.content[0] != 0;
        if (parseElement(part, at, left, &at, &left) != STATUS_OK) return false;
    }
    extension.value = part.content;
    extension.length = part.contentLength;
    return part.tag == DER_OCTET_STRING && left == 0;
}

} // namespace

Fact extensionsFact(const CertificateInfo& certificate)
{
    Fact fact{"extensions", ""};
    std::set<std::string> seen;
    const std::uint8_t* at = certificate.extensions.content;
    for (std::uint32_t left = certificate.extensions.contentLength; left > 0;) {
        DerElement element;
        Extension extension;
        if (parseElement(element, at, left, &at, &left) != STATUS_OK || !readExtension(extension, element)) {
            fact.parts.push_back({"malformed", toHex(at, left, SHOWN_OCTETS)});
            break;
        }
        // The library's readers take the first of a kind: a second one is shown as it is.
        std::string text = seen.insert(extension.oid).second ? extensionText(certificate, extension) : "";
        if (text.empty()) text = toHex(extension.value, extension.length, SHOWN_OCTETS);
        const std::string name = oidName(extension.oid.c_str());
        fact.parts.push_back({name + (name == extension.oid ? "" : " (" + extension.oid + ")"),
                              (extension.critical ? "critical, " : "") + text});
    }
    return fact;
}

} // namespace toolbelt::cli
