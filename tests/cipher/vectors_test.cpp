// Published blocks, on the fastest routines of this machine and on the portable ones.
#include "tests/cipher/cipher_support.h"

#include <iterator>
#include <set>
#include <sstream>

namespace toolbelt::test {
namespace {

void checkRecord(const Record& record, cSymAlg& cipher)
{
    const Bytes plain = record.bytes("plain"), encrypted = record.bytes("cipher");
    ASSERT_FALSE(plain.empty());
    if (record.has("iv")) { // of CBC, the mode of a new object
        EXPECT_EQ(toHex(chained(cipher, true, record.bytes("iv"), plain)), toHex(encrypted));
        EXPECT_EQ(toHex(chained(cipher, false, record.bytes("iv"), encrypted)), toHex(plain));
        return;
    }
    EXPECT_EQ(toHex(ecb(cipher, true, plain)), toHex(encrypted));
    EXPECT_EQ(toHex(ecb(cipher, false, encrypted)), toHex(plain));
    for (const char* times : {"100", "1000"}) {
        const std::string name = std::string("iterated-") + times;
        if (!record.has(name)) continue;
        std::uint32_t blockSize = 0, keySize = 0;
        cipher.getSizes(&blockSize, &keySize);
        Bytes block(plain.begin(), plain.begin() + static_cast<std::ptrdiff_t>(blockSize));
        for (int i = 0; i < std::stoi(times); ++i) block = ecb(cipher, true, block);
        EXPECT_EQ(toHex(block), record.get(name));
    }
}

TEST(CipherVectors, EveryRecordOnEveryTier)
{
    const Record rowsOfName = readVectors("cipher-rows.txt").front();
    std::set<std::int32_t> rows;
    std::uint32_t records = 0;
    const std::vector<std::uint32_t> tiers = featureSteps();
    for (const std::uint32_t features : tiers) {
        const FeatureLimit limit(features);
        for (const char* file : {"ciphers.txt", "ciphers-gost.txt", "ciphers-keys.txt"})
            for (const Record& record : readVectors(file)) {
                SCOPED_TRACE(record.where);
                std::istringstream ids(rowsOfName.get(record.get("cipher-name")));
                for (const std::int32_t id : std::vector<std::int32_t>(std::istream_iterator<std::int32_t>(ids), {})) {
                    const Cipher cipher = makeCipher(id, record.bytes("key"));
                    EXPECT_TRUE(cipher) << id;
                    if (!cipher) continue;
                    checkRecord(record, *cipher);
                    rows.insert(id);
                }
                EXPECT_EQ(record.unread(), std::vector<std::string>());
                ++records;
            }
    }
    EXPECT_EQ(rowsOfName.unread(), std::vector<std::string>());
    EXPECT_EQ(rows.size(), CIPHER_ROW_COUNT - 1) << "all but the identity";
    EXPECT_EQ(records, tiers.size() * (292 + 8 + 11));
}

// The maintenance test of RFC 2144, without its million iterations, which would take seconds.
TEST(CipherVectors, Cast128Iterated)
{
    Bytes a, b;
    std::uint32_t done = 0, checkpoints = 0;
    const auto encrypted = [](const Bytes& key, const Bytes& plain) { return ecb(*makeCipher(3, key), true, plain); };
    for (const Record& record : readVectors("tables/cast128-sboxes.txt")) {
        if (!record.has("iterations") || record.number("iterations") > 1000) continue;
        SCOPED_TRACE(record.where);
        if (record.number("iterations") == 0) a = record.bytes("a"), b = record.bytes("b");
        for (; done < record.number("iterations"); ++done) {
            a = encrypted(b, a);
            b = encrypted(a, b);
        }
        EXPECT_EQ(toHex(a), record.get("a"));
        EXPECT_EQ(toHex(b), record.get("b"));
        ++checkpoints;
    }
    EXPECT_EQ(checkpoints, 5u);
}

} // namespace
} // namespace toolbelt::test
