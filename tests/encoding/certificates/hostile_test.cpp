// Certificates that were cut or changed.
#include "crypto/encoding/x509.h"
#include "tests/encoding/certificates/support.h"

namespace toolbelt::test {
namespace {

const char* const FILES[] = {"a-leaf", "a-root", "b-root", "dh-leaf", "dsa-leaf", "real-godaddy-class2", "odd"};

TEST(HostileCertificates, NoPrefixIsRead)
{
    CertificateInfo info;
    for (const char* file : FILES) {
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

TEST(HostileCertificates, NoChangedOctetVerifies)
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
