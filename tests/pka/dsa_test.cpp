// DSA: other programs' signatures in both directions, and the rules of signing that have no vectors.
#include <gtest/gtest.h>

#include <map>

#include "tests/pka/keys.h"

namespace toolbelt::test {
namespace {

TEST(Dsa, VectorsVerifyAndGivenSecretsGiveTheirSignatures)
{
    std::map<std::string, int> counts;
    for (const Record& record : readVectors("keys/dsa.txt")) {
        if (record.has("p")) continue;
        SCOPED_TRACE(record.where);
        const FieldNumbers& numbers = dsaNumbers(record.get("domain"));
        const Key open = numbers.open(), secret = numbers.secret();
        const Bytes digest = record.bytes("digest-value"), r = record.bytes("r"), s = record.bytes("s");
        const Bytes number = join({prefixed(r), prefixed(s)}), der = derElement(0x30, derIntegers({r, s}));
        const bool good = record.get("expect") == "good";
        if (good && record.has("der")) {
            EXPECT_EQ(der, record.bytes("der"));
        }
        EXPECT_EQ(verifyPrefixed(*open, number, digest), good ? 0 : 32);
        EXPECT_EQ(verifyDer(*open, der, digest), good ? 0 : 32);
        ++counts[good ? "good" : "bad"];
        if (!record.has("k")) continue;
        const Bytes k = record.bytes("k");
        if (k.size() > 20) { // beyond what the library draws
            ++counts["long secrets"];
            continue;
        }
        for (const auto& [slot, signature] :
             {std::pair<OutputSlot, Bytes>{&cPKA::signPrefixed, number}, {&cPKA::signDer, der}}) {
            const Pool pool(padded(k, 20));
            EXPECT_EQ(run(*secret, slot, digest), signature);
            EXPECT_EQ(pool.bytes, Bytes(20)) << "what was taken is wiped";
        }
        ++counts["signed"];
        EXPECT_EQ(record.unread({"digest", "message", "der"}), std::vector<std::string>());
    }
    EXPECT_EQ(counts, (std::map<std::string, int>{{"good", 45}, {"bad", 22}, {"signed", 15}, {"long secrets", 6}}));
}

TEST(Dsa, SecretsComeFromThePoolAndZeroIsReplaced)
{
    const FieldNumbers& numbers = dsaNumbers("dsa512-160");
    const Key open = numbers.open(), secret = numbers.secret();
    const Bytes digest = fromHex("a9993e364706816aba3e25717850c26c9cd0d89d");
    resetRandomPool();
    run(*secret, &cPKA::signPrefixed, digest, 30);
    EXPECT_EQ(randomPoolShortfall(), 20u);
    setRandomPool(nullptr, 20);
    EXPECT_EQ(randomPoolShortfall(), 0u);
    run(*secret, &cPKA::signDer, digest, 30);
    {
        Pool pool(join({Bytes(20), fromHex("13579bdf02468ace"), Bytes(40, 7)}));
        std::uint32_t length = 131;
        std::uint8_t small[131];
        EXPECT_EQ(secret->signPrefixed(small, &length, digest.data(), 20), 1);
        EXPECT_EQ(length, 132u);
        const Bytes replaced = run(*secret, &cPKA::signPrefixed, digest); // took the zeros: no request before it did
        setRandomPool(pool.bytes.data() + 8, 59);
        EXPECT_EQ(run(*secret, &cPKA::signPrefixed, digest), replaced) << "zeros and the fixed secret are one";
        EXPECT_EQ(verifyPrefixed(*open, replaced, digest), 0);
        run(*secret, &cPKA::signPrefixed, digest);
        std::uint8_t taken[20];
        EXPECT_EQ(takeRandom(taken, 20), PKA_E_RANDOM);
        EXPECT_EQ(randomPoolShortfall(), 20u);
        EXPECT_EQ(takeRandom(taken, 19), STATUS_OK) << "a request that fails takes nothing";
        EXPECT_EQ(takeRandom(taken, 0), STATUS_OK);
        setRandomPool(pool.bytes.data(), 68);
        pool.bytes[67] = 9;
        resetRandomPool();
        EXPECT_EQ(pool.bytes, Bytes(68)) << "what is left is wiped";
    }
    const Bytes q = numbers.q; // has no inverse modulo itself
    const Pool pool(q);
    run(*secret, &cPKA::signPrefixed, digest, 30);
}

TEST(Dsa, EachOperationDemandsItsMark)
{
    const FieldNumbers& numbers = dsaNumbers("dsa512-160");
    const Bytes blob = numbers.privateBlob(), digest(20, 1);
    Bytes output(132);
    for (const std::uint32_t magic : {DSA_PUBLIC_MAGIC, DSA_PRIVATE_MAGIC, 1u}) {
        const bool isPublic = magic == DSA_PUBLIC_MAGIC, isPrivate = magic == DSA_PRIVATE_MAGIC;
        const Pool pool(Bytes(40, 9));
        DsaKey* record = nullptr;
        ASSERT_EQ(importDsaPrivateBlob(&record, blob.data(), sizeOf(blob)), 0);
        EXPECT_EQ(record->magic, DSA_PRIVATE_MAGIC);
        record->magic = magic;
        std::uint32_t length = 132;
        EXPECT_EQ(dsaSign(*record, PairForm::prefixed, output.data(), &length, digest.data(), 20), isPublic ? 0 : 4);
        EXPECT_EQ(dsaVerify(*record, PairForm::prefixed, output.data(), length, digest.data(), 20), isPublic ? 0 : 4);
        EXPECT_EQ(dsaKeyLength(*record), magic == 1 ? 0 : 64);
        const Key secret(newPrivateDsa(DsaOwner(record)));
        cPKA* made = nullptr;
        EXPECT_EQ(secret->exportDer(nullptr, &(length = 0)), isPrivate ? 1 : 8);
        EXPECT_EQ(secret->makePublic(&made), isPrivate ? 0 : 8);
        EXPECT_EQ(Key(made) != nullptr, isPrivate);
        run(*secret, &cPKA::signPrefixed, digest, magic == 1 ? 30 : 0); // the core is lent the mark it demands
    }
}

} // namespace
} // namespace toolbelt::test
