// Public keys read from PEM and SubjectPublicKeyInfo, against what other programs say of them.
#include "crypto/encoding/key_text.h"

#include <map>

#include "crypto/encoding/key_write.h"
#include "crypto/pka/dsa.h"
#include "crypto/pka/elgamal.h"
#include "tests/encoding/certificates/support.h"

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

// A PublicKeyInfo as another program wrote it comes back octet for octet.
void expectWrittenAs(cPKA& key, const Bytes& bytes)
{
    std::uint32_t length = 0;
    EXPECT_EQ(exportSubjectPublicKeyInfo(key, nullptr, &length), STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, bytes.size());
    Bytes written(length + 1, 0xA5), untouched = written;
    EXPECT_EQ(exportSubjectPublicKeyInfo(key, written.data(), &--length), STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(written, untouched);
    EXPECT_EQ(exportSubjectPublicKeyInfo(key, written.data(), &length), STATUS_OK);
    written.pop_back();
    EXPECT_EQ(written, bytes);
}

// The numbers of a key under their names in the vectors.
std::vector<std::pair<const char*, const BigNum*>> numbersOf(cPKA& key)
{
    if (const auto* rsa = dynamic_cast<cPublicRSA*>(&key)) return {{"n", rsa->record().n}, {"e", rsa->record().e}};
    if (const auto* dsa = dynamic_cast<cPublicDSA*>(&key)) {
        const DsaKey& numbers = dsa->record();
        return {{"p", &numbers.p}, {"q", &numbers.q}, {"g", &numbers.g}, {"y", &numbers.y}};
    }
    const ElgamalKey& numbers = dynamic_cast<cPublicElgamal&>(key).record();
    return {{"p", &numbers.p}, {"q", &numbers.fourth}, {"g", &numbers.g}, {"y", &numbers.y}};
}

TEST(KeyText, EveryPublishedKeyIsReadAndWrittenOrRefusedForItsKind)
{
    const std::map<std::string, std::uint32_t> kinds = {{"RSA", PKA_RSA}, {"DSA", PKA_DSA}, {"DH", PKA_ELGAMAL}};
    std::map<std::string, int> read;
    for (const Record& record : readVectors("keys/public-keys.txt")) {
        SCOPED_TRACE(record.where);
        const Bytes pem = readVectorFile("keys/" + record.get("file"));
        const Bytes bytes = fromPem("keys/" + record.get("file"), "PUBLIC KEY");
        EXPECT_EQ(digestHex(8, bytes.data(), sizeOf(bytes)), record.get("spki-sha256"));
        const auto kind = kinds.find(record.get("key"));
        const auto key =
            readKey(std::string(pem.begin(), pem.end()), kind != kinds.end() ? STATUS_OK : KEY_E_NO_READER);
        if (!key) continue;
        ++read[kind->first];
        EXPECT_EQ(key->algorithm(), kind->second);
        EXPECT_EQ(key->keyLength(), (record.number("key-bits") + 7) / 8);
        for (const auto& [name, number] : numbersOf(*key))
            EXPECT_EQ(hexOf(*number), record.has(name) ? record.get(name) : "") << name;
        expectWrittenAs(*key, bytes);
        SubjectPublicKeyInfo info;
        ASSERT_EQ(readSubjectPublicKeyInfo(info, bytes.data(), sizeOf(bytes)), STATUS_OK);
        const DerElement& bits = info.key.element;
        if (record.has("key-identifier")) {
            EXPECT_EQ(digestHex(2, bits.content, bits.contentLength), record.get("key-identifier"));
        }
        if (record.has("pkcs1-file")) {
            EXPECT_EQ(Bytes(bits.content, bits.content + bits.contentLength),
                      fromPem("keys/" + record.get("pkcs1-file"), "RSA PUBLIC KEY"));
        }
        if (record.has("ssh-rsa")) {
            const std::string& ssh = record.get("ssh-rsa");
            Bytes blob(1000);
            std::uint32_t needed = 0, length = 1000;
            EXPECT_EQ(exportSshRsa(*key, nullptr, &needed), STATUS_BUFFER_TOO_SMALL);
            EXPECT_EQ(exportSshRsa(*key, blob.data(), &length), STATUS_OK);
            EXPECT_EQ(length, needed);
            EXPECT_TRUE(armouredEquals(ssh.data(), static_cast<std::uint32_t>(ssh.size()), blob.data(), length, nullptr,
                                       nullptr));
        }
        EXPECT_TRUE(record.unread({"oid", "q-bits"}).empty());
    }
    EXPECT_EQ(read, (std::map<std::string, int>{{"RSA", 13}, {"DSA", 6}, {"DH", 3}}));
}

TEST(KeyText, TheInfoOfAPrivateKeyIsThatOfItsPublicHalf)
{
    const Bytes dsa = fromHex("00051700040b000202000408000203"); // 2^3 = 8 mod 23
    const Bytes elgamal = fromHex("00051700030500040a000203");   // 5^3 = 10 mod 23
    const std::unique_ptr<cPKA> keys[] = {std::unique_ptr<cPKA>(newPrivateDsa(dsa.data(), sizeOf(dsa))),
                                          std::unique_ptr<cPKA>(newPrivateElgamal(elgamal.data(), sizeOf(elgamal)))};
    ASSERT_TRUE(keys[0] && keys[1]);
    expectWrittenAs(*keys[0], fromHex("301c301406072a8648ce380401300902011702010b020102030400020108"));
    expectWrittenAs(*keys[1], fromHex("301b301306092a864886f70d010301300602011702010503040002010a"));
    cPKA none;
    std::uint32_t length = 0;
    EXPECT_EQ(exportSubjectPublicKeyInfo(none, nullptr, &length), KEY_E_NO_READER);
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
        const Status expected = code >= 1 && code <= 3                   ? STATUS_OK
                                : code == 16 || code == 17 || code == 20 ? DER_E_TAG // no parameters
                                                                         : KEY_E_NO_READER;
        EXPECT_EQ(readPublicKeyFromInfo(&key, info), expected) << code;
        delete key;
    }
}

TEST(KeyText, TruncatedKeysGiveNoKey)
{
    const Bytes whole = fromPem("keys/rsa768.pub.pem", "PUBLIC KEY");
    SubjectPublicKeyInfo info; // one record for all readings
    cPKA* none = nullptr;
    for (std::size_t n = 0; n < whole.size(); ++n) {
        const Bytes cut(whole.data(), whole.data() + n);
        EXPECT_NE(readSubjectPublicKeyInfo(info, cut.data(), sizeOf(cut)), STATUS_OK);
        EXPECT_EQ(readPublicKeyFromInfo(&none, info), KEY_E_NO_READER) << "a record that was not read is empty";
    }
    // Cut inside, where the lengths around still fit.
    ASSERT_EQ(readSubjectPublicKeyInfo(info, whole.data(), sizeOf(whole)), STATUS_OK);
    const DerElement full = info.key.element;
    for (std::uint32_t n = 0; n < full.contentLength; ++n) {
        const Bytes cut(full.content, full.content + n);
        info.key.element.content = cut.data();
        info.key.element.contentLength = n;
        EXPECT_EQ(readPublicKeyFromInfo(&none, info), DER_E_MALFORMED);
    }
    EXPECT_EQ(none, nullptr);
}

} // namespace
} // namespace toolbelt::test
