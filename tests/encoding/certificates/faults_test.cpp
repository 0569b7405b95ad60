// Every field of a certificate with every fault, one at a time: faults.txt says what the readers must answer. And
// certificates that were cut or changed.
#include "crypto/encoding/x509.h"
#include "tests/encoding/certificates/support.h"

namespace toolbelt::test {
namespace {

const char* const FAULTS[] = {"missing", "tag", "empty", "short", "long", "huge", "doubled"};

// The element's octets with the fault, in hexadecimal.
std::string damaged(const DerElement& element, const std::string& fault)
{
    const std::string whole = toHex(element.start, element.totalLength);
    const std::string content = toHex(element.content, element.contentLength), identifier = whole.substr(0, 2);
    if (fault == "missing") return "";
    if (fault == "tag") return "0a" + whole.substr(2);
    if (fault == "empty") return identifier + "00";
    if (fault == "huge") return identifier + "84fffffffa" + content;
    if (fault == "doubled") return whole + whole;
    // A length one off, in the last of its octets: none of the certificate's ends in 00 or FF.
    Bytes bytes = fromHex(whole);
    bytes[element.totalLength - element.contentLength - 1] += fault == "long" ? 1 : 0xFF;
    return toHex(bytes);
}

// The element with the fault in the part that the path leads to. The lengths on the way fit what is inside.
std::string build(const DerElement& element, const Bytes& path, const std::string& fault, std::size_t depth = 0)
{
    if (depth == path.size()) return damaged(element, fault);
    const std::uint32_t unusedBits = element.tag == DER_BIT_STRING; // one octet, which stays
    std::string content = toHex(element.content, unusedBits);
    const std::uint8_t* at = element.content + unusedBits;
    std::uint32_t left = element.contentLength - unusedBits;
    for (std::uint32_t i = 0; left != 0; ++i) {
        DerElement part;
        EXPECT_EQ(parseElement(part, at, left, &at, &left), STATUS_OK);
        content += i == path[depth] ? build(part, path, fault, depth + 1) : toHex(part.start, part.totalLength);
    }
    return der(toHex(element.start, 1), content);
}

std::string answers(const std::string& hex)
{
    const Bytes bytes = fromHex(hex);
    const Bytes none(1);
    CertificateInfo info;
    Status status = readCertificate(info, bytes.empty() ? none.data() : bytes.data(), sizeOf(bytes));
    if (status != STATUS_OK) return std::to_string(status);
    std::int32_t result = -1, pathLength;
    std::uint8_t isCa;
    const std::uint8_t* id;
    std::uint32_t length;
    status = verifyCertificateSignature(info, 8, &result);
    EXPECT_EQ(result, status == STATUS_OK);
    return "0 " + std::to_string(status) + " " + std::to_string(readBasicConstraints(info, &isCa, &pathLength)) + " " +
           std::to_string(readSubjectKeyId(info, &id, &length));
}

TEST(CertificateFaults, EachHasItsStatus)
{
    const Bytes whole = certificate("t-expired");
    DerElement root;
    ASSERT_EQ(parseElement(root, whole.data(), sizeOf(whole)), STATUS_OK);
    ASSERT_EQ(answers(toHex(whole)), "0 0 0 0");
    std::uint32_t checked = 0;
    for (const Record& record : readVectors("../encoding/certificates/faults.txt")) {
        SCOPED_TRACE(record.get("field"));
        Bytes path;
        for (const char digit : record.get("path"))
            if (digit >= '0' && digit <= '9') path.push_back(static_cast<std::uint8_t>(digit - '0'));
        for (const char* fault : FAULTS) {
            if (record.get(fault) == "none") continue;
            EXPECT_EQ(answers(build(root, path, fault)), record.get(fault)) << fault;
            ++checked;
        }
        EXPECT_TRUE(record.unread().empty()) << record.where;
    }
    std::printf("%u faults\n", checked);
    EXPECT_EQ(checked, 375u); // 54 elements
}

TEST(CertificateFaults, NoPrefixIsRead)
{
    CertificateInfo info;
    for (const char* file : {"a-leaf", "b-root", "dh-leaf", "dsa-leaf", "real-godaddy-class2", "odd"}) {
        const Bytes whole = certificate(file);
        for (std::size_t n = 0; n < whole.size(); ++n) {
            const Bytes cut(whole.data(), whole.data() + n);
            // What is cut short runs past its data; an empty block has an address all the same.
            const std::uint8_t* const data = n != 0 ? cut.data() : whole.data();
            ASSERT_EQ(readCertificate(info, data, sizeOf(cut)), DER_E_LENGTH) << file << " " << n;
            ASSERT_TRUE(!info.tbs.start && !info.issuer.head && !info.signature.oid.text) << "a failed record is empty";
        }
        // The same inside a signed part whose own length is right: whole parts are all that is taken.
        ASSERT_EQ(readCertificate(info, whole.data(), sizeOf(whole)), STATUS_OK);
        const DerElement key = info.subjectPublicKeyInfo.element, signedPart = info.tbs;
        const std::string content = toHex(signedPart.content, signedPart.contentLength);
        for (std::uint32_t n = 0; n <= signedPart.contentLength; ++n) {
            const Bytes cut = fromHex(der("30", content.substr(0, 2 * n)));
            const bool complete =
                signedPart.content + n == key.start + key.totalLength || n == signedPart.contentLength;
            ASSERT_EQ(readTbsCertificate(info, cut.data(), sizeOf(cut)) == STATUS_OK, complete) << file << " " << n;
        }
    }
}

TEST(CertificateFaults, NoChangedOctetVerifies)
{
    Bytes bytes = certificate("t-expired");
    CertificateInfo info;
    std::int32_t result = -1;
    ASSERT_EQ(readCertificate(info, bytes.data(), sizeOf(bytes)), STATUS_OK);
    ASSERT_EQ(verifyCertificateSignature(info, 8, &result), STATUS_OK);
    const std::size_t tbsBegin = static_cast<std::size_t>(info.tbs.start - bytes.data());
    const std::size_t tbsEnd = tbsBegin + info.tbs.totalLength;
    const std::size_t signature = static_cast<std::size_t>(info.signatureValue.element.start - bytes.data());
    const std::size_t unusedBits = static_cast<std::size_t>(info.signatureValue.element.content - bytes.data()) - 1;
    for (std::size_t i = tbsBegin; i < bytes.size(); ++i) {
        if (i == tbsEnd) i = signature;
        for (const int change : {0x01, 0x80, 0xFF}) {
            bytes[i] = static_cast<std::uint8_t>(bytes[i] ^ change);
            result = 0;
            // By design, the octet that counts the signature's unused bits is skipped, whichever of 0 to 7 it is.
            const bool harmless = i == unusedBits && change == 0x01;
            if (readCertificate(info, bytes.data(), sizeOf(bytes)) == STATUS_OK) {
                result = -1;
                EXPECT_EQ(verifyCertificateSignature(info, 8, &result) == STATUS_OK, harmless) << i;
            }
            EXPECT_EQ(result, harmless) << i;
            bytes[i] = static_cast<std::uint8_t>(bytes[i] ^ change);
        }
    }
    EXPECT_EQ(verifyCertificateSignature(CertificateInfo(), 8, &result), KEY_E_NO_READER);
    EXPECT_EQ(result, 0);
}

} // namespace
} // namespace toolbelt::test
