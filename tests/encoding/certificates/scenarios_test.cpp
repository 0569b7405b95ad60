// Certificates made up by hand, one rule at a time: scenarios.txt names each, with its input and the answers.
#include "crypto/encoding/x509.h"
#include "tests/encoding/certificates/support.h"

namespace toolbelt::test {
namespace {

// A TBSCertificate around the required parts of a real one.
Bytes signedPart(const std::string& front, const std::string& parts)
{
    const Bytes real = certificate("t-expired");
    CertificateInfo info;
    EXPECT_EQ(readCertificate(info, real.data(), sizeOf(real)), STATUS_OK);
    const DerElement& key = info.subjectPublicKeyInfo.element;
    const auto length = static_cast<std::size_t>(key.start + key.totalLength - info.serialNumber.start);
    return fromHex(der("30", front + toHex(info.serialNumber.start, length) + parts));
}

void checkSignedPart(const Record& record, CertificateInfo& info)
{
    const Bytes bytes = signedPart(record.get("front"), record.get("parts"));
    EXPECT_EQ(readTbsCertificate(info, bytes.data(), sizeOf(bytes)), static_cast<Status>(record.number("status")));
    EXPECT_EQ(info.version, record.number("version"));
    // One record serves all scenarios: nothing of an earlier reading may survive.
    const DerElement &issuer = info.issuerUniqueId.element, &subject = info.subjectUniqueId.element;
    EXPECT_EQ(hexOrNone(issuer.content, issuer.contentLength),
              record.has("issuer-id") ? record.get("issuer-id") : "none");
    EXPECT_EQ(hexOrNone(subject.content, subject.contentLength),
              record.has("subject-id") ? record.get("subject-id") : "none");
    EXPECT_EQ(info.subjectUniqueId.unusedBits, record.has("subject-id") ? 3u : 0u);
}

void checkSubjectKeyId(const Record& record, const CertificateInfo& info)
{
    const std::uint8_t *id, *value;
    std::uint32_t length, valueLength;
    std::uint8_t critical = 0;
    EXPECT_EQ(readSubjectKeyId(info, &id, &length), static_cast<Status>(record.number("status")));
    EXPECT_EQ(hexOrNone(id, length), record.get("id"));
    const bool found = findExtension(info, OID_SUBJECT_KEY_ID, &critical, &value, &valueLength) == STATUS_OK;
    EXPECT_EQ(found ? std::to_string(critical) : "none", record.get("critical"));
}

void checkBasicConstraints(const Record& record, const CertificateInfo& info)
{
    std::uint8_t isCa = 1;
    std::int32_t pathLength = 1;
    EXPECT_EQ(readBasicConstraints(info, &isCa, &pathLength), static_cast<Status>(record.number("status")));
    EXPECT_EQ(isCa, record.number("ca"));
    EXPECT_EQ(std::to_string(pathLength), record.get("path-length"));
}

void checkAuthorityKeyId(const Record& record, const CertificateInfo& info)
{
    const std::uint8_t *id, *issuer;
    std::uint32_t idLength, issuerLength, serial;
    std::int32_t tag;
    EXPECT_EQ(readAuthorityKeyId(info, &id, &idLength, &tag, &issuer, &issuerLength, &serial),
              static_cast<Status>(record.number("status")));
    EXPECT_EQ(hexOrNone(id, idLength), record.get("id"));
    EXPECT_EQ(hexOrNone(issuer, issuerLength), record.get("issuer"));
    EXPECT_EQ(tag, static_cast<std::int32_t>(record.number("issuer-tag")));
    EXPECT_EQ(serial, record.number("serial"));
}

TEST(CertificateScenarios, EveryRuleGivesItsStatus)
{
    CertificateInfo info;
    std::uint32_t checked = 0;
    const auto readExtensions = [&](Bytes& bytes, const std::string& list) {
        bytes = signedPart("", der("a3", der("30", list)));
        ASSERT_EQ(readTbsCertificate(info, bytes.data(), sizeOf(bytes)), STATUS_OK);
    };
    for (const Record& record : readVectors(SCENARIOS)) {
        SCOPED_TRACE(record.where + ": " + record.get(record.kind()));
        Bytes bytes;
        if (record.kind() == "key") continue; // the suite of key texts
        if (record.kind() == "signed-part") {
            checkSignedPart(record, info);
        } else if (record.kind() == "extensions") {
            readExtensions(bytes, record.get("list"));
            checkSubjectKeyId(record, info);
        } else if (record.kind() == "basic-constraints") {
            readExtensions(bytes, der("30", "0603551d13" + der("04", record.get("value"))));
            checkBasicConstraints(record, info);
        } else {
            readExtensions(bytes, der("30", "0603551d23" + der("04", record.get("value"))));
            checkAuthorityKeyId(record, info);
        }
        EXPECT_TRUE(record.unread().empty());
        ++checked;
    }
    EXPECT_GE(checked, 50u);
}

} // namespace
} // namespace toolbelt::test
