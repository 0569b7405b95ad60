// What a forger can do without the private key, value by value: which signatures, ciphertexts and bytes of a padded
// block the documented rules accept.
#include <map>

#include "crypto/encoding/oid_table.h"
#include "tests/pka/keys.h"

namespace toolbelt::test {
namespace {

// A number that differs from another by a small one.
Bytes plus(const Bytes& number, std::int32_t offset, std::size_t size = 0)
{
    Bytes bytes = join({{0}, number});
    std::int32_t carry = offset;
    for (std::size_t i = bytes.size(); i-- > 0; carry >>= 8) {
        carry += bytes[i];
        bytes[i] = static_cast<std::uint8_t>(carry);
    }
    while (bytes.size() > 1 && bytes.front() == 0) bytes.erase(bytes.begin());
    return size == 0 ? bytes : padded(bytes, size);
}

TEST(Forgery, CubesFillWhatTheRulesLeaveFree)
{
    std::map<Status, int> verdicts;
    for (const Record& record : readVectors("../pka/forgeries.txt")) {
        SCOPED_TRACE(record.get("forgery"));
        const Key open = rsaKey(record.get("key")).open();
        const Bytes signature = record.bytes("signature"), digest = record.bytes("digest");
        const Status expected = record.number("status");
        EXPECT_EQ(verifyDer(*open, derElement(4, signature), digest), expected);
        EXPECT_EQ(verifyPrefixed(*open, prefixed(signature, signature.size() + 2), digest), expected);
        EXPECT_EQ(verifyDer(*open, derElement(4, signature), Bytes(20, 1)), 32) << "for one digest only";
        EXPECT_TRUE(record.unread().empty()) << record.where;
        ++verdicts[expected];
    }
    EXPECT_EQ(verdicts, (std::map<Status, int>{{0, 2}, {32, 27}}));
}

// Every change of one byte of a block behind its first, of the padding some, signed: what is still accepted is what is
// documented, and nothing else.
TEST(Forgery, OneChangedByteOfABlock)
{
    // 256 bits, so that all can be signed; a digest of 4 bytes in a DigestInfo.
    const Bytes p = fromHex("e2e6a552266e572e1106def0d237d88b"), q = fromHex("c265a53e7abaf38b971abc1e65e88d17");
    const Bytes one = {1}, e = {1, 0, 1};
    const Key secret = fromBlob(
        newPrivateRsa, join({prefixed(one), prefixed(e), prefixed(one), prefixed(q), prefixed(p), prefixed(one)}));
    const Key open = publicHalf(*secret);
    const Bytes digest = fromHex("a1b2c3d4"), info = fromHex("3011300906052b0e03021a05000404a1b2c3d4");
    const Bytes block = join({{0, 1}, Bytes(10, 0xFF), {0}, info});
    ASSERT_EQ(block.size(), 32u);
    const RsaPrivateKey& record = dynamic_cast<cPrivateRSA&>(*secret).record();
    std::map<std::size_t, int> accepted;
    for (std::size_t at = 0; at < block.size(); ++at)
        for (int change = 1; change < 256; ++change) {
            Bytes changed = block, signature(32);
            changed[at] = static_cast<std::uint8_t>(changed[at] ^ change);
            // Such a number is not below the modulus. Of the padding's values only 00 differs from the others.
            if (at == 0 || (at < 12 && change % 0x55 != 0)) continue;
            ASSERT_EQ(rsaPrivateOperation(record, changed.data(), signature.data(), RSA_RAW), 0);
            const Status status = verifyDer(*open, derElement(4, signature), digest);
            EXPECT_TRUE(status == 0 || status == 32);
            accepted[at] += status == 0;
        }
    std::erase_if(accepted, [](const auto& entry) { return entry.second == 0; });
    // The identifier octets of the SEQUENCEs and of the OCTET STRING count in their low five bits, that of the
    // parameters not at all, and the algorithm may be any other known one: here those whose identifiers differ from
    // SHA-1's in one octet.
    int known = 0;
    std::map<std::size_t, int> expected = {{13, 7}, {15, 7}, {24, 255}, {26, 7}};
    for (std::size_t i = 0; i < 5; ++i)
        for (int change = 1; change < 256; ++change) {
            Bytes octets = slice(info, 6, 5);
            octets[i] = static_cast<std::uint8_t>(octets[i] ^ change);
            char text[DER_OID_TEXT_SIZE];
            const bool isKnown =
                formatOid(text, octets.data(), 5) == STATUS_OK && lookupOid(nullptr, 0, text, nullptr) != 0;
            expected[19 + i] += isKnown;
            known += isKnown;
        }
    std::erase_if(expected, [](const auto& entry) { return entry.second == 0; });
    EXPECT_EQ(accepted, expected);
    std::printf("%d changed bytes are accepted, %d of them other algorithms\n", 276 + known, known);
}

TEST(Forgery, NumbersAtTheEndsOfTheirRange)
{
    for (const char* name : {"rsa512", "rsa512e3", "rsa1025"}) {
        SCOPED_TRACE(name);
        const RsaNumbers& numbers = rsaKey(name);
        const std::uint32_t k = numbers.k();
        const Key open = numbers.open(), secret = numbers.secret();
        const Bytes zero(k), one = plus(zero, 1, k), last = plus(numbers.n, -1, k), digest(20, 0x42);
        const std::pair<Bytes, Bytes> values[] = {// and what they are modulo n, to any odd power
                                                  {zero, zero},
                                                  {one, one},
                                                  {last, last},
                                                  {padded(numbers.n, k), zero},
                                                  {plus(numbers.n, 1, k), one}};
        for (const auto& [value, power] : values) {
            for (const Bytes& claimed : {digest, Bytes(), Bytes(k - 3), value})
                EXPECT_NE(verifyDer(*open, derElement(4, value), claimed), 0);
            EXPECT_EQ(verifyPrefixed(*open, prefixed(value, k + 2), digest), 32);
            EXPECT_EQ(run(*secret, &cPKA::privateFromDer, derElement(4, value)), power);
            EXPECT_EQ(run(*secret, &cPKA::privateFromPrefixed, prefixed(value, k + 2)), power);
            // A short input to a small exponent fails, n and above counting as what they are modulo n.
            const bool isShort = numbers.e == Bytes{3} && power != last;
            const Bytes result = run(*open, &cPKA::publicFromDer, derElement(4, value), isShort ? 32 : 0);
            EXPECT_TRUE(isShort || result == power);
            EXPECT_TRUE(isShort || run(*open, &cPKA::encryptPrefixed, value) == prefixed(power, k + 2));
        }
        if (numbers.bits != 1025) continue; // of which the bytes have room for a signature with n on top
        const Bytes signature = slice(run(*secret, &cPKA::signDer, digest), 3, k);
        BigNum raised, n;
        ASSERT_EQ(bnImport(raised, signature.data(), k) | bnImport(n, numbers.n.data(), k) | bnAdd(raised, raised, n),
                  0);
        EXPECT_EQ(verifyDer(*open, derElement(4, signature), digest), 0);
        EXPECT_EQ(verifyDer(*open, derElement(4, bytesOf(raised)), digest), 32);
        EXPECT_EQ(verifyPrefixed(*open, prefixed(bytesOf(raised), k + 2), digest), 32);
    }
}

TEST(Forgery, OneChangedByteOfADsaSignature)
{
    const FieldNumbers& numbers = dsaNumbers("dsa512-160");
    const Bytes digest(20, 0x42);
    const Pool pool(Bytes(64, 0x21));
    const Bytes signature = run(*numbers.secret(), &cPKA::signPrefixed, digest);
    const Key open = numbers.open();
    ASSERT_EQ(verifyPrefixed(*open, signature, digest), 0);
    for (const Bytes* changes : {&signature, &digest})
        for (std::size_t at = 0; at < changes->size(); ++at)
            for (int change = 1; change < 256; ++change) {
                Bytes bytes = *changes;
                bytes[at] = static_cast<std::uint8_t>(bytes[at] ^ change);
                const bool isDigest = changes == &digest;
                // The same numbers: their counts of bits only tell how many octets they have.
                const bool same = !isDigest && (at == 1 || at == 23) && (bytes[at] + 7) / 8 == ((*changes)[at] + 7) / 8;
                EXPECT_EQ(verifyPrefixed(*open, isDigest ? signature : bytes, isDigest ? bytes : digest) == 0, same)
                    << at << " " << change << (isDigest ? " of the digest" : " of the signature");
            }
}

// By design the range of an ElGamal signature is not tested. Stated here, so that nobody is surprised: whoever has one
// signature can make others, and a digest of zeros has one that anybody knows.
TEST(Forgery, ElgamalShowsNoMoreThanThatTheEquationHolds)
{
    // A small field with x = 127, where r = 29 and s = 51 sign 100.
    const Bytes p = {1, 0xD3}, g = {2}, y = {132};
    const Key open = fromBlob(newPublicElgamal, join({prefixed(p), prefixed(g), prefixed(y)}));
    const auto verify = [&](const Bytes& r, const Bytes& s, const Bytes& digest) {
        const Status status = verifyPrefixed(*open, join({prefixed(r), prefixed(s)}), digest);
        EXPECT_EQ(verifyDer(*open, derElement(0x30, derIntegers({r, s})), digest), status);
        return status;
    };
    EXPECT_EQ(verify({29}, {51}, {100}), 0);
    EXPECT_EQ(verify({}, {}, {}), 0) << "a number that is 0";
    EXPECT_EQ(verify({}, {}, Bytes(20)), 0);
    // From a signature of 101, one of 7: r and s are multiplied by 7/101 modulo p - 1, and r is raised by multiples of
    // p - 1 until it is what it was modulo p.
    EXPECT_EQ(verify({0x01, 0xAE, 0xA1}, {98}, {7}), 0) << "r is 110241, far above p, which tells it";
    // Ciphertexts are numbers modulo p too; one whose first number is 0 has no plain text.
    const Key secret = fromBlob(newPrivateElgamal, join({prefixed(p), prefixed(g), prefixed(y), prefixed({127})}));
    const auto decrypt = [&](const Bytes& a, Status status) {
        return run(*secret, &cPKA::privateFromPrefixed, join({prefixed(a), prefixed({5})}), status);
    };
    for (const Bytes& multiple : {Bytes(), p}) decrypt(multiple, 30);
    for (const Bytes& one : {Bytes{1}, plus(p, 1)}) EXPECT_EQ(decrypt(one, 0), (Bytes{0, 5}));
    EXPECT_EQ(decrypt(plus(p, -1), 0), (Bytes{0x01, 0xCE})) << "-5 modulo p";
}

} // namespace
} // namespace toolbelt::test
