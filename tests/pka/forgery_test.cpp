// What a forger can do without the private key. Blocks with single bytes changed, and numbers at the ends of their
// range, are compared with a model by the fuzz target verify.
#include <map>

#include "tests/pka/keys.h"

namespace toolbelt::test {
namespace {

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

} // namespace
} // namespace toolbelt::test
