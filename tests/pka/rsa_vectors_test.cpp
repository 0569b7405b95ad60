// RSA against other programs' signatures and ciphertexts, in both directions.
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "crypto/pka/pkcs1.h"
#include "tests/pka/keys.h"

namespace toolbelt::test {
namespace {

// Its objects, made once.
const std::pair<Key, Key>& keysOf(const RsaNumbers& numbers)
{
    static std::map<Bytes, std::pair<Key, Key>> made;
    const auto [place, isNew] = made.try_emplace(numbers.n);
    if (isNew) place->second = {numbers.open(), numbers.secret()};
    return place->second;
}

Bytes payloadOf(const Bytes& block, Pkcs1Type type, Status expected = STATUS_OK)
{
    const std::uint8_t* payload = block.data();
    std::uint32_t length = 0;
    EXPECT_EQ(pkcs1Unpad(&payload, &length, block.data(), sizeOf(block), type), expected);
    return Bytes(payload, payload + length);
}

// Records on which the engine differs, by design, from a verifier that follows the standard to the letter: it compares
// no algorithm and takes a bare digest.
const std::set<std::string> acceptedByDesign = {
    "DigestInfo of another digest of the same length",
    "no DigestInfo where one is required",
    "DigestInfo without the NULL parameter (RFC 8017 lets a verifier accept it)",
};

TEST(RsaVectors, Signatures)
{
    std::map<Status, int> verdicts;
    for (const Record& record : readVectors("keys/rsa-signatures.txt")) {
        SCOPED_TRACE(record.where);
        const RsaNumbers& numbers = rsaKey(record.get("key"));
        const auto& [open, secret] = keysOf(numbers);
        const Bytes signature = record.bytes("signature"), der = derElement(4, signature);
        const bool good = record.get("expect") == "good", hasInfo = record.get("digest-info") == "yes";
        const Bytes input = hasInfo ? record.bytes("digest-value") : record.message("input");
        Status expected = PKA_E_FAILED;
        if (signature.size() != numbers.k()) expected = PKA_E_LENGTH;
        if (good || acceptedByDesign.contains(record.get("note"))) expected = STATUS_OK;
        if (record.get("padding") == "none") {
            EXPECT_EQ(run(*secret, &cPKA::rawToDer, input), der);
            EXPECT_EQ(run(*open, &cPKA::publicFromDer, der), input);
            expected = -1;
        } else {
            const Bytes number = prefixed(signature, numbers.k() + 2);
            EXPECT_EQ(verifyDer(*open, der, input), expected);
            EXPECT_EQ(verifyDer(*open, derElement(3, join({{0}, signature})), input), expected);
            if (expected != PKA_E_LENGTH) {
                EXPECT_EQ(verifyPrefixed(*open, number, input), expected);
            }
            if (good) { // signing the data, or the block prepared around it, gives the other program's signature
                const Bytes block = run(*open, &cPKA::publicFromDer, der), data = payloadOf(block, PKCS1_SIGNATURE);
                EXPECT_EQ(run(*open, &cPKA::publicFromPrefixed, number), block);
                EXPECT_EQ(data.size() > input.size(), hasInfo);
                EXPECT_EQ(run(*secret, &cPKA::signDer, data), der);
                EXPECT_TRUE(numbers.k() > 128 || run(*secret, &cPKA::signPrefixed, block) == number);
            }
        }
        ++verdicts[expected];
        EXPECT_EQ(record.unread({"digest", "message", "openssl-verdict"}), std::vector<std::string>());
    }
    EXPECT_EQ(verdicts, (std::map<Status, int>{{-1, 11}, {STATUS_OK, 156}, {PKA_E_LENGTH, 4}, {PKA_E_FAILED, 19}}));
}

TEST(RsaVectors, Encryption)
{
    for (const Record& record : readVectors("keys/rsa-encryption.txt")) {
        SCOPED_TRACE(record.where);
        const RsaNumbers& numbers = rsaKey(record.get("key"));
        const auto& [open, secret] = keysOf(numbers);
        const Bytes cipher = record.bytes("cipher");
        const Bytes block = run(*secret, &cPKA::privateFromDer, derElement(4, cipher));
        const Bytes number = prefixed(cipher, numbers.k() + 2);
        EXPECT_EQ(run(*open, &cPKA::encryptPrefixed, block), number);
        EXPECT_TRUE(numbers.k() > 128 || run(*secret, &cPKA::privateFromPrefixed, number) == block);
        EXPECT_EQ(run(*open, &cPKA::rawToDer, block), derElement(4, cipher));
        EXPECT_EQ(record.get("padding"), "pkcs1-v1.5 type 02");
        if (record.get("expect") == "good") {
            EXPECT_EQ(payloadOf(block, PKCS1_ENCRYPTION), record.bytes("plain"));
        } else if (record.get("note").starts_with("only seven padding bytes")) {
            EXPECT_EQ(payloadOf(block, PKCS1_ENCRYPTION).size(), numbers.k() - 10); // by design no minimum is demanded
        } else {
            payloadOf(block, PKCS1_ENCRYPTION, PKA_E_BLOCK);
        }
        EXPECT_EQ(record.unread(), std::vector<std::string>());
    }
}

} // namespace
} // namespace toolbelt::test
