// Public keys read from PEM and SubjectPublicKeyInfo, against what other programs say of them.
#include "crypto/encoding/key_text.h"

#include "tests/encoding/certificates/support.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {
namespace {

std::string hexOf(const BigNum& number)
{
    Bytes bytes((bnBitLength(number) + 7) / 8);
    bnExport(bytes.data(), sizeOf(bytes), number);
    return toHex(bytes);
}

std::unique_ptr<cPKA> readKey(const std::string& text, Status expected)
{
    Status status = -1;
    std::unique_ptr<cPKA> key(readPemPublicKey(text.c_str(), &status));
    EXPECT_EQ(status, expected);
    EXPECT_EQ(key != nullptr, expected == STATUS_OK);
    return key;
}

Status readInfo(SubjectPublicKeyInfo& info, const Bytes& bytes)
{
    cPKA* key = nullptr;
    Status status = readSubjectPublicKeyInfo(info, bytes.data(), sizeOf(bytes));
    if (status == STATUS_OK) status = readPublicKeyFromInfo(&key, info);
    EXPECT_EQ(key != nullptr, status == STATUS_OK);
    delete key;
    return status;
}

TEST(KeyText, EveryPublishedKeyIsReadOrRefusedForItsKind)
{
    std::uint32_t read = 0;
    for (const Record& record : readVectors("keys/public-keys.txt")) {
        SCOPED_TRACE(record.where);
        const Bytes pem = readVectorFile("keys/" + record.get("file"));
        const bool rsa = record.get("key") == "RSA";
        const auto key = readKey(std::string(pem.begin(), pem.end()), rsa ? STATUS_OK : KEY_E_NO_READER);
        const Bytes bytes = fromPem("keys/" + record.get("file"), "PUBLIC KEY");
        EXPECT_EQ(digestHex(8, bytes.data(), sizeOf(bytes)), record.get("spki-sha256"));
        if (!key) continue;
        ++read;
        const RsaPublicKey& numbers = static_cast<const cPublicRSA&>(*key).record();
        EXPECT_EQ(key->algorithm(), PKA_RSA);
        EXPECT_EQ(numbers.bits, record.number("key-bits"));
        EXPECT_EQ(key->keyLength(), (numbers.bits + 7) / 8);
        EXPECT_EQ(hexOf(*numbers.n), record.get("n"));
        EXPECT_EQ(hexOf(*numbers.e), record.get("e"));

        std::uint32_t needed = 0;
        EXPECT_EQ(exportSshRsa(*key, nullptr, &needed), STATUS_BUFFER_TOO_SMALL);
        Bytes blob(needed);
        std::uint32_t length = needed;
        ASSERT_EQ(exportSshRsa(*key, blob.data(), &length), STATUS_OK);
        EXPECT_EQ(length, needed);
        const std::string& ssh = record.get("ssh-rsa");
        EXPECT_TRUE(
            armouredEquals(ssh.data(), static_cast<std::uint32_t>(ssh.size()), blob.data(), length, nullptr, nullptr));

        SubjectPublicKeyInfo info;
        ASSERT_EQ(readSubjectPublicKeyInfo(info, bytes.data(), sizeOf(bytes)), STATUS_OK);
        const DerElement& bits = info.key.element;
        EXPECT_EQ(digestHex(2, bits.content, bits.contentLength), record.get("key-identifier"));
        if (record.has("pkcs1-file")) {
            EXPECT_EQ(Bytes(bits.content, bits.content + bits.contentLength),
                      fromPem("keys/" + record.get("pkcs1-file"), "RSA PUBLIC KEY"));
        }
        EXPECT_TRUE(record.unread().empty());
    }
    EXPECT_GE(read, 13u);
}

TEST(KeyText, TextsAndKeysThatBreakARuleAreRefused)
{
    const Bytes bytes = readVectorFile("keys/rsa1024.pub.pem");
    const std::string pem(bytes.begin(), bytes.end());
    const std::size_t end = pem.rfind("-----");
    readKey("words before\n" + pem.substr(0, end + 4) + "\nwords behind", STATUS_OK); // four closing dashes
    readKey(pem.substr(0, end + 3), TEXT_E_MALFORMED);
    readKey("", TEXT_E_MALFORMED);
    EXPECT_EQ(readPemPublicKey(nullptr), nullptr);

    SubjectPublicKeyInfo info; // points into what it was read from
    for (const Record& record : readVectors(SCENARIOS)) {
        if (record.kind() != "key") continue;
        SCOPED_TRACE(record.get("key"));
        RsaPublicKey* numbers = nullptr;
        const Bytes text = record.bytes("info");
        EXPECT_EQ(readInfo(info, text), static_cast<Status>(record.number("status")));
        if (!record.has("rsa-status")) continue;
        EXPECT_EQ(readRsaPublicKey(&numbers, info), static_cast<Status>(record.number("rsa-status")));
    }
    // The largest modulus has 16,384 bits.
    Bytes largest;
    for (const std::size_t octets : {2049, 2048}) {
        const std::string modulus = der("02", "00ff" + std::string(2 * octets - 4, '0') + "01");
        const std::string bits = der("03", "00" + der("30", modulus + "0203010001"));
        largest = fromHex(der("30", "300b06092a864886f70d010101" + bits));
        EXPECT_EQ(readInfo(info, largest), octets == 2048 ? STATUS_OK : DER_E_MALFORMED);
    }
    // The code of the algorithm's row selects the reader.
    for (int code = 0; code <= OID_NONE; ++code) {
        const OidRow row = {nullptr, 0, "", nullptr, nullptr, OID_NONE, OID_NONE, static_cast<std::uint8_t>(code),
                            OID_NONE};
        info.algorithm.row = &row;
        cPKA* key = nullptr;
        EXPECT_EQ(readPublicKeyFromInfo(&key, info), code >= 1 && code <= 3 ? STATUS_OK : KEY_E_NO_READER) << code;
        delete key;
    }
}

TEST(KeyText, TruncatedKeysAndFailingMemoryGiveNoKeyAndLeaveNothing)
{
    const Bytes whole = fromPem("keys/rsa768.pub.pem", "PUBLIC KEY");
    SubjectPublicKeyInfo info; // one record for all readings
    cPKA* none = nullptr;
    for (std::size_t n = 0; n < whole.size(); ++n) {
        const Bytes cut(whole.data(), whole.data() + n);
        EXPECT_NE(readSubjectPublicKeyInfo(info, cut.data(), sizeOf(cut)), STATUS_OK);
        EXPECT_EQ(readPublicKeyFromInfo(&none, info), KEY_E_NO_READER) << "a record that was not read is empty";
    }
    ASSERT_EQ(readSubjectPublicKeyInfo(info, whole.data(), sizeOf(whole)), STATUS_OK);
    const DerElement full = info.key.element;
    for (std::uint32_t n = 0; n < full.contentLength; ++n) {
        const Bytes cut(full.content, full.content + n);
        info.key.element.content = cut.data();
        info.key.element.contentLength = n;
        EXPECT_EQ(readPublicKeyFromInfo(&none, info), DER_E_MALFORMED);
    }
    EXPECT_EQ(none, nullptr);

    const Bytes pem = readVectorFile("keys/rsa1024.pub.pem");
    const std::string text(pem.begin(), pem.end());
    const std::uint32_t injected = forEachFailingAllocation([&](TestHeap& heap) {
        Status status = -1;
        const std::unique_ptr<cPKA> key(readPemPublicKey(text.c_str(), &status));
        EXPECT_EQ(key == nullptr, heap.failed());
        EXPECT_TRUE(key || status == TEXT_E_MALFORMED || status == DER_E_MEMORY || status == DER_E_MALFORMED);
    });
    EXPECT_GE(injected, 8u);
}

} // namespace
} // namespace toolbelt::test
