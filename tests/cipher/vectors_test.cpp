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
        for (const char* file : {"ciphers.txt", "ciphers-gost.txt"})
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
    EXPECT_EQ(records, tiers.size() * (292 + 8));
}

} // namespace
} // namespace toolbelt::test
