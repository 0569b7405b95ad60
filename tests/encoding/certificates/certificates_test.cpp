// Every certificate of the vectors, field by field against what another program says of it.
#include <algorithm>
#include <cstdio>
#include <map>

#include "crypto/encoding/x509.h"
#include "tests/encoding/certificates/support.h"

namespace toolbelt::test {
namespace {

const std::int64_t CHECKED_AT = 1704067200; // 2024-01-01T00:00:00Z, the moment of the index's chain checks

// Identifiers of attributes and signatures under the index's names for them.
const Record NAMES = readVectors("certificates/names.txt").front();

// The attributes in the order of the encoding, each behind a separator.
std::string nameText(const NameList& name, const std::string& separator)
{
    std::string text;
    for (const NameAttribute* node = name.head; node; node = node->next)
        text = separator + NAMES.get(node->oid) + "=" + node->value + text;
    return text;
}

// A name of the index as the reader keeps it: only the first attribute of a SET.
std::string firstAttributes(std::string text)
{
    for (std::size_t plus; (plus = text.find(" + ")) != std::string::npos;)
        text.erase(plus, std::min(text.find(" + ", plus + 3), text.find(", ", plus)) - plus);
    return ", " + text;
}

std::string timeText(const DerTime& time, const DerElement& element)
{
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ %s", time.year, time.month, time.day, time.hour,
                  time.minute, time.second, element.tag == DER_UTC_TIME ? "UTCTime" : "GeneralizedTime");
    return text;
}

// Kinds of keys that a class reads.
const std::map<std::string, std::uint32_t> readableKeys = {{"RSA", PKA_RSA}, {"DSA", PKA_DSA}, {"DH", PKA_ELGAMAL}};

void checkKey(const Record& record, const SubjectPublicKeyInfo& info)
{
    cPKA* opened = nullptr;
    const Status status = readPublicKeyFromInfo(&opened, info);
    const std::unique_ptr<cPKA> key(opened);
    EXPECT_EQ(status, readableKeys.contains(record.get("key")) ? STATUS_OK : KEY_E_NO_READER);
    if (!key) return;
    EXPECT_EQ(key->keyLength(), (record.number("key-bits") + 7) / 8);
    EXPECT_EQ(key->algorithm(), readableKeys.at(record.get("key")));
    if (key->algorithm() != PKA_RSA) return;
    const RsaPublicKey& numbers = static_cast<const cPublicRSA&>(*key).record();
    EXPECT_EQ(numbers.bits, record.number("key-bits"));
    EXPECT_EQ(bnCompareWord(*numbers.e, record.number("exponent")), 0);
}

void checkExtensions(const Record& record, const CertificateInfo& info)
{
    std::uint8_t isCa = 1, critical = 1;
    std::int32_t pathLength = 0, tag = 0;
    const std::uint8_t *octets = nullptr, *id = nullptr;
    std::uint32_t length = 0, idLength = 0, serial = 0;
    // These certificates write "no CA" as an empty SEQUENCE, which the reader refuses.
    const std::string& ca = record.get("ca");
    EXPECT_EQ(readBasicConstraints(info, &isCa, &pathLength), ca == "yes"  ? STATUS_OK
                                                              : ca == "no" ? DER_E_LENGTH
                                                                           : DER_E_NOT_FOUND);
    EXPECT_EQ(isCa, ca == "yes" ? 0xFF : 0);
    EXPECT_EQ(pathLength == -1 ? "none" : std::to_string(pathLength), record.get("path-length"));
    const bool hasConstraints = findExtension(info, OID_BASIC_CONSTRAINTS, &critical, &octets, &length) == STATUS_OK;
    ASSERT_EQ(hasConstraints, record.has("ca-critical"));
    EXPECT_EQ(critical, hasConstraints ? record.get("ca-critical") == "yes" ? 0xFF : 0 : 1);
    const bool hasUsage = findExtension(info, "2.5.29.15", &critical, &octets, &length) == STATUS_OK;
    ASSERT_EQ(hasUsage, record.has("key-usage"));
    EXPECT_TRUE(!hasUsage || critical == (record.get("key-usage").ends_with("(critical)") ? 0xFF : 0));

    const std::string& subject = record.get("ski");
    EXPECT_EQ(readSubjectKeyId(info, &id, &idLength), subject == "none" ? DER_E_NOT_FOUND : STATUS_OK);
    EXPECT_EQ(hexOrNone(id, idLength), subject);
    const bool byIssuer = record.has("aki-issuer");
    EXPECT_EQ(readAuthorityKeyId(info, &id, &idLength, &tag, &octets, &length, &serial),
              record.get("aki-keyid") == "none" && !byIssuer ? DER_E_NOT_FOUND : STATUS_OK);
    EXPECT_EQ(hexOrNone(id, idLength), record.get("aki-keyid"));
    ASSERT_EQ(octets != nullptr, byIssuer);
    if (!byIssuer) return;
    NameList name;
    EXPECT_EQ(tag, 4); // a distinguished name
    ASSERT_EQ(readName(name, octets, length), STATUS_OK);
    EXPECT_EQ(nameText(name, "/"), record.get("aki-issuer"));
    const std::string whole = "00000000" + record.get("aki-serial");
    EXPECT_EQ(serial, std::stoul(whole.substr(whole.size() - 8), nullptr, 16));
}

// Checks the signature with the key in the certificate's record, which is the signer's.
void checkSignature(const Record& record, const Record& signer, const Record& issuer, bool good,
                    const CertificateInfo& info)
{
    const std::string& algorithm = record.get("signature");
    Status expected = good ? STATUS_OK : PKA_E_FAILED;
    if (signer.get("key") != issuer.get("key") || signer.get("key-bits") != issuer.get("key-bits"))
        expected = signer.get("key") == "RSA" ? PKA_E_LENGTH : PKA_E_FAILED;
    if (algorithm == "sha384WithRSAEncryption" || algorithm == "rsassaPss") expected = CRYPT_E_UNKNOWN_ALGORITHM;
    if (!readableKeys.contains(signer.get("key"))) expected = KEY_E_NO_READER;
    std::int32_t result = -1;
    EXPECT_EQ(verifyCertificateSignature(info, info.signatureAlgorithm.row->digest, &result), expected);
    EXPECT_EQ(result, expected == STATUS_OK);
}

TEST(Certificates, EveryFieldIsWhatAnotherProgramSays)
{
    const std::vector<Record> records = readVectors("certificates/index.txt");
    std::map<std::string, const Record*> byFile;
    for (const Record& record : records)
        if (record.has("file")) byFile[record.get("file")] = &record;
    CertificateInfo info, signer; // re-read for every certificate
    for (const auto& [file, entry] : byFile) {
        const Record& record = *entry;
        SCOPED_TRACE(file);
        const Bytes bytes = fromPem("certificates/" + file, "CERTIFICATE");
        const std::uint8_t* rest = nullptr;
        std::uint32_t remaining = 1;
        const Status status = readCertificate(info, bytes.data(), sizeOf(bytes), &rest, &remaining);
        EXPECT_EQ(bytes.size(), record.number("der-bytes"));
        EXPECT_TRUE(!record.has("der-file") || bytes == readVectorFile("certificates/" + record.get("der-file")));
        if (record.has("parse")) {
            EXPECT_EQ(status, DER_E_LENGTH);
            EXPECT_EQ(rest, nullptr);
            continue;
        }
        ASSERT_EQ(status, STATUS_OK);
        EXPECT_EQ(rest, bytes.data() + bytes.size());
        EXPECT_EQ(remaining, 0u);
        EXPECT_EQ(digestHex(2, info.outer.start, info.outer.totalLength), record.get("fingerprint-sha1"));
        EXPECT_EQ(digestHex(8, info.outer.start, info.outer.totalLength), record.get("fingerprint-sha256"));
        EXPECT_EQ(info.version, record.number("version"));
        const bool padded = info.serialNumber.contentLength > 1 && info.serialNumber.content[0] == 0;
        EXPECT_EQ(toHex(info.serialNumber.content + padded, info.serialNumber.contentLength - padded),
                  record.get("serial"));
        const std::string subject = nameText(info.subject, ", "), issuerName = nameText(info.issuer, ", ");
        EXPECT_EQ(subject, firstAttributes(record.get("subject")));
        EXPECT_EQ(issuerName, firstAttributes(record.get("issuer")));
        EXPECT_EQ(subject == issuerName, record.get("self-issued") == "yes");
        EXPECT_EQ(timeText(info.validity.notBefore, info.validity.notBeforeElement), record.get("not-before"));
        EXPECT_EQ(timeText(info.validity.notAfter, info.validity.notAfterElement), record.get("not-after"));
        const std::string& chain = record.get("chain-check");
        const bool outOfTime = chain.starts_with("error 9 at depth 0") || chain.starts_with("error 10 at depth 0");
        EXPECT_EQ(isTimeValid(info.validity, CHECKED_AT), !outOfTime);
        const std::string inner = record.has("inner-signature") ? "inner-signature" : "signature";
        EXPECT_EQ(info.signature.oid.text, NAMES.get(record.get(inner)));
        EXPECT_EQ(info.signatureAlgorithm.oid.text, NAMES.get(record.get("signature")));
        checkKey(record, info.subjectPublicKeyInfo);
        checkExtensions(record, info);

        const Record& issuer = *byFile.at(record.get("issuer-file"));
        checkSignature(record, record, issuer, record.get("self-signed") == "yes", info);
        const Bytes issuerBytes = fromPem("certificates/" + record.get("issuer-file"), "CERTIFICATE");
        ASSERT_EQ(readCertificate(signer, issuerBytes.data(), sizeOf(issuerBytes)), STATUS_OK);
        const DerElement& key = signer.subjectPublicKeyInfo.element;
        ASSERT_EQ(readSubjectPublicKeyInfo(info.subjectPublicKeyInfo, key.start, key.totalLength), STATUS_OK);
        checkSignature(record, issuer, issuer, record.get("signature-check") == "good", info);
        const auto unread = record.unread({"key-bits"});
        EXPECT_TRUE(unread.empty()) << unread.front();
    }
}

} // namespace
} // namespace toolbelt::test
