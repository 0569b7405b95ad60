// Published blocks, on the fastest routines of this machine and on the portable ones.
#include "tests/cipher/cipher_support.h"

#include <map>
#include <set>

namespace toolbelt::test {
namespace {

// Every row that builds the cipher of a record's name.
const std::map<std::string, std::vector<std::int32_t>> rowsOfName = {
    {"DES", {0x83}},
    {"3DES-EDE3", {2}},
    {"IDEA", {1}},
    {"CAST-128", {3}},
    {"RC2", {100, 101}},
    {"Blowfish", {4, 0x80, 0x81}},
    {"Twofish-256", {10, 0x8A}},
    {"Serpent-256", {0x89}},
    {"GOST 28147-89", {0x85}},
    {"AES-128", {7, 0x88}},
    {"AES-192", {8, 0x88}},
    {"AES-256", {9, 0x88}},
    {"Camellia-128", {11}},
    {"Camellia-192", {12}},
    {"Camellia-256", {13}},
    {"ARIA-128", {26}},
    {"ARIA-192", {27}},
    {"ARIA-256", {28}},
    {"RC6-128", {0x87}},
    {"RC6-192", {0x87}},
    {"RC6-256", {0x87}},
};

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
    std::set<std::int32_t> rows;
    std::uint32_t records = 0;
    const std::vector<std::uint32_t> tiers = featureSteps();
    for (const std::uint32_t features : tiers) {
        const FeatureLimit limit(features);
        for (const char* file : {"ciphers.txt", "ciphers-gost.txt"})
            for (const Record& record : readVectors(file)) {
                SCOPED_TRACE(record.where);
                for (const std::int32_t id : rowsOfName.at(record.get("cipher-name"))) {
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
    EXPECT_EQ(rows.size(), CIPHER_ROW_COUNT - 1) << "all but the identity";
    EXPECT_EQ(records, tiers.size() * (292 + 8));
}

} // namespace
} // namespace toolbelt::test
