// Certificates: what was accepted lies inside its input, part behind part; questions have consistent answers.
#include <cstring>

#include "crypto/encoding/x509.h"
#include "fuzz/natural.h"

namespace toolbelt::fuzz {
namespace {

bool lies(const DerElement& inner, const DerElement& outer)
{
    return inner.start >= outer.content && inner.content >= inner.start &&
           inner.content + inner.contentLength <= outer.content + outer.contentLength;
}
const std::uint8_t* behind(const DerElement& element)
{
    return element.start + element.totalLength;
}

void ask(const CertificateInfo& info)
{
    const std::uint8_t *id = nullptr, *authority = nullptr, *issuer = nullptr, *value = nullptr;
    std::uint32_t idLength = 1, authorityLength = 1, issuerLength = 1, serial = 1, length = 0;
    std::int32_t issuerTag = 1, pathLength = 1;
    std::uint8_t isCa = 1;
    const bool hasId = readSubjectKeyId(info, &id, &idLength) == STATUS_OK;
    require(hasId ? id && idLength == 20 : !id && idLength == 0, "a subject key identifier");
    const Status constraints = readBasicConstraints(info, &isCa, &pathLength);
    require(constraints == STATUS_OK || constraints == STATUS_BUFFER_TOO_SMALL || (isCa == 0 && pathLength == -1),
            "no constraints from a failure");
    const Status status =
        readAuthorityKeyId(info, &authority, &authorityLength, &issuerTag, &issuer, &issuerLength, &serial);
    require(authority ? authorityLength == 20 : authorityLength == 0, "an authority key identifier");
    require(status == STATUS_OK || (!authority && !issuer && issuerTag == 0 && serial == 0), "none from a failure");
    for (const char* oid : {OID_SUBJECT_KEY_ID, OID_BASIC_CONSTRAINTS, OID_AUTHORITY_KEY_ID}) {
        if (findExtension(info, oid, nullptr, &value, &length) != STATUS_OK) continue;
        require(value >= info.extensions.content &&
                    value + length <= info.extensions.content + info.extensions.contentLength,
                "a value lies in its extensions");
    }
}

// A hostile key may ask for half a second of work: only small ones are tried.
void verify(const CertificateInfo& info)
{
    cPKA* key = nullptr;
    if (readPublicKeyFromInfo(&key, info.subjectPublicKeyInfo) != STATUS_OK) return;
    const bool isCheap = key->keyLength() <= 64 && info.subjectPublicKeyInfo.element.totalLength <= 512;
    delete key;
    if (!isCheap) return;
    std::int32_t result = -1;
    const std::int32_t digest = info.signatureAlgorithm.row->digest;
    const Status status = verifyCertificateSignature(info, digest, &result);
    require(result == (status == STATUS_OK), "a verdict is its status");
}

const Target target("certificate", [](Input input) {
    const Bytes bytes = input.take(4096);
    CertificateInfo info;
    const std::uint8_t* rest = nullptr;
    std::uint32_t restLength = 0;
    if (readCertificate(info, addressOf(bytes), sizeOf(bytes), &rest, &restLength) != STATUS_OK) {
        require(!info.tbs.start && !info.subject.head && !info.signature.oid.text && !rest, "a failed record is empty");
        if (readTbsCertificate(info, addressOf(bytes), sizeOf(bytes)) == STATUS_OK) ask(info);
        return;
    }
    require(info.outer.start == bytes.data() && rest == behind(info.outer) &&
                restLength == bytes.size() - info.outer.totalLength,
            "the outer element");
    const SubjectPublicKeyInfo& key = info.subjectPublicKeyInfo;
    const DerElement &signature = info.signatureAlgorithm.element, &serial = info.serialNumber;
    require(info.tbs.start == info.outer.content && signature.start == behind(info.tbs) &&
                info.signatureValue.element.start == behind(signature) && lies(info.signatureValue.element, info.outer),
            "signed part, algorithm and signature follow one another");
    for (const DerElement* part :
         std::initializer_list<const DerElement*>{&serial, &info.signature.element, &info.validity.notBeforeElement,
                                                  &info.validity.notAfterElement, &key.element})
        require(lies(*part, info.tbs), "a part lies in the signed part");
    require(info.signature.element.start == behind(serial), "the algorithm follows the serial number");
    require(lies(key.algorithm.element, key.element) && lies(key.key.element, key.element), "the key's parts");
    require(!info.extensions.content || lies(info.extensions, info.tbs), "the extensions");
    require(info.signature.row && info.signatureAlgorithm.row && key.algorithm.row, "algorithms are known");
    ask(info);
    verify(info);
    CertificateInfo again;
    require(readTbsCertificate(again, info.tbs.start, info.tbs.totalLength) == STATUS_OK &&
                again.version == info.version && again.extensions.start == info.extensions.start,
            "the signed part alone reads the same");
});

} // namespace
} // namespace toolbelt::fuzz
