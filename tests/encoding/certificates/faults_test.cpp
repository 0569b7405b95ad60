// Every field of a certificate with every fault, one at a time; faults.txt says what the readers must answer.
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

} // namespace
} // namespace toolbelt::test
