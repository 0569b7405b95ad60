// The registry as documented, and the key rules of its members.
#include <cxxabi.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <typeinfo>

#include "tests/cipher/cipher_support.h"

namespace toolbelt::test {
namespace {

std::string className(const cSymAlg& cipher)
{
    const std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(typeid(cipher).name(), nullptr, nullptr, nullptr), std::free);
    return name.get();
}

TEST(CipherRegistry, RowsAndOfferedIdsAreTheDocumentedOnes)
{
    struct Expected
    {
        std::int32_t id;
        const char* name;
        std::uint32_t standard, largest, block, reported; // reported: the key answer of getSizes for a default key
    };
    constexpr Expected table[] = {
        {0, "cAlgDummy", 0, 4711, 0, 0},         {1, "cAlgIdea", 16, 16, 8, 16},
        {2, "cAlg3des", 24, 24, 8, 24},          {3, "cAlgCast", 16, 16, 8, 16},
        {4, "cAlgBfish", 16, 56, 8, 16},         {0x80, "cAlgBfish", 32, 56, 8, 32},
        {0x81, "cAlgBfish", 56, 56, 8, 56},      {0x8A, "cAlgTFish", 32, 32, 16, 0},
        {10, "cAlgTFish", 32, 32, 16, 0},        {0x85, "cAlgGOST", 32, 32, 8, 0},
        {0x88, "cAlgRIJN", 32, 32, 16, 32},      {7, "cAlgRIJN", 16, 32, 16, 32},
        {8, "cAlgRIJN", 24, 32, 16, 32},         {9, "cAlgRIJN", 32, 32, 16, 32},
        {0x89, "cAlgSerpent", 32, 32, 16, 0},    {0x83, "cAlgDes", 8, 8, 8, 8},
        {100, "cAlgRC2_40", 5, 16, 8, 5},        {101, "cAlgRC2_128", 16, 16, 8, 16},
        {11, "cAlgCamellia128", 16, 16, 16, 16}, {12, "cAlgCamellia192", 24, 24, 16, 24},
        {13, "cAlgCamellia", 32, 32, 16, 32},    {26, "cAlgARIA128", 16, 16, 16, 16},
        {27, "cAlgARIA192", 24, 24, 16, 24},     {28, "cAlgARIA", 32, 32, 16, 32},
        {0x87, "cAlgRC6", 32, 32, 16, 32},
    };
    ASSERT_EQ(std::size(table), CIPHER_ROW_COUNT);
    std::set<std::string> names;
    for (std::size_t i = 0; i < std::size(table); ++i) {
        const Expected& expected = table[i];
        const CipherRow& row = cipherRows[i];
        SCOPED_TRACE(expected.id);
        EXPECT_EQ(row.id, expected.id);
        std::uint32_t largest = 4711; // the identity leaves it
        EXPECT_EQ(row.keySize(&largest), expected.standard);
        EXPECT_EQ(largest, expected.largest);
        EXPECT_EQ(row.keySize(nullptr), expected.standard);
        EXPECT_EQ(row.blockSize(), expected.block);
        const CipherRow* found = nullptr;
        EXPECT_EQ(findCipher(&found, expected.id), CRYPT_OK);
        EXPECT_EQ(found, &row);
        names.insert(cipherNames[i]);

        const Cipher cipher = makeCipher(row.id, randomBytes(expected.standard, 1));
        EXPECT_TRUE(cipher);
        if (!cipher) continue;
        EXPECT_EQ(className(*cipher), std::string("toolbelt::") + expected.name);
        std::uint32_t blockSize = 4711, keySize = 4711;
        EXPECT_EQ(cipher->getSizes(&blockSize, &keySize), 1u);
        EXPECT_EQ(blockSize, expected.block);
        EXPECT_EQ(keySize, expected.reported);
    }
    EXPECT_EQ(names.size(), CIPHER_ROW_COUNT);

    const std::vector<std::int32_t> offered(offeredCiphers, offeredCiphers + OFFERED_CIPHER_COUNT);
    EXPECT_EQ(offered,
              (std::vector<std::int32_t>{1, 2, 3, 4, 9, 0x80, 0x81, 0x8A, 0x85, 0x88, 0x89, 100, 101, 13, 28}));
    const CipherRow* untouched = &cipherRows[3];
    for (const std::int32_t id : {-1, 5, 14, 0x82, 0x100, 0x180}) EXPECT_EQ(findCipher(&untouched, id), 22);
    EXPECT_EQ(untouched, &cipherRows[3]);
}

// Which lengths a member takes, and how many bytes such a key counts as, filled up with zeros or cut: for every length,
// with each key in a block of its exact size.
TEST(CipherKeys, AreFilledUpCutOrRefused)
{
    enum Rule
    {
        FIXED,
        BLOWFISH,
        RC2,
        RC6,
        RIJNDAEL,
        THREE_LENGTHS
    };
    constexpr std::uint32_t REFUSED = ~0u;
    const auto countsAs = [](Rule rule, std::uint32_t length, std::uint32_t full) {
        const bool three = length == 16 || length == 24 || length == 32;
        switch (rule) {
        case FIXED:
            return full;
        case BLOWFISH:
            return std::clamp(length, 5u, 56u);
        case RC2:
            return length >= 1 && length <= 128 ? length : REFUSED;
        case RC6:
            return length >= 1 && length <= 255 ? length : REFUSED;
        case RIJNDAEL: // bytes or bits
            if (length == 128 || length == 192 || length == 256) return length / 8;
            [[fallthrough]];
        default:
            return three ? length : REFUSED;
        }
    };
    // A row names a class alone: others with the same rule, but for the fixed lengths, give the same as the first.
    const std::pair<Rule, std::vector<std::int32_t>> members[] = {{FIXED, {0x83, 2, 1, 3, 0x85, 0x8A, 10, 0x89}},
                                                                  {BLOWFISH, {4, 0x80, 0x81}},
                                                                  {RC2, {100, 101}},
                                                                  {RC6, {0x87}},
                                                                  {RIJNDAEL, {9, 7, 8, 0x88}},
                                                                  {THREE_LENGTHS, {13, 11, 12}},
                                                                  {THREE_LENGTHS, {28, 26, 27}}};
    const Bytes plain = randomBytes(64, 2);
    Bytes random = randomBytes(300, 3);
    for (std::uint8_t& byte : random) byte |= 2; // another than a filling zero, whatever its parity
    std::size_t rows = 1;                        // the identity takes anything
    for (const auto& [rule, ids] : members)
        for (const std::int32_t id : ids) {
            ++rows;
            const CipherRow& row = rowOf(id);
            Bytes previous;
            for (std::uint32_t length = 0; length <= random.size(); ++length) {
                SCOPED_TRACE(testing::Message() << "id " << id << ", " << length << " bytes");
                const std::uint32_t bytes = countsAs(rule, length, row.keySize(nullptr));
                const bool inBits = rule == RIJNDAEL && bytes < length;
                const Bytes key(random.data(), random.data() + (inBits ? bytes : length));
                const Cipher cipher(row.create(key.data(), length));
                ASSERT_EQ(cipher != nullptr, bytes != REFUSED);
                if (!cipher) continue;
                Bytes equivalent = key;
                equivalent.resize(bytes);
                const Cipher twin = makeCipher(rule == FIXED ? id : ids[0], equivalent);
                const Bytes encrypted = ecb(*cipher, true, plain);
                EXPECT_EQ(encrypted, ecb(*twin, true, plain));
                EXPECT_EQ(ecb(*cipher, false, encrypted), plain);
                // One byte more makes another key, unless it is cut off.
                EXPECT_TRUE(inBits || (encrypted == previous) == (length > bytes));
                previous = encrypted;
                std::uint32_t blockSize = 0, keySize = 0;
                cipher->getSizes(&blockSize, &keySize);
                // RC2 names the nominal one, and those of a fixed length stand in the table above.
                const bool isFixed = rule == FIXED || rule == RIJNDAEL;
                EXPECT_TRUE(isFixed || keySize == (rule != RC2 ? bytes : id == 100 ? 5u : 16u)) << keySize;
            }
            EXPECT_FALSE(Cipher(row.create(nullptr, 16))) << "no key where a length says one";
            if (rule == FIXED || rule == BLOWFISH) continue;
            for (const std::uint32_t length : {0x80000001u, ~0u})
                EXPECT_FALSE(Cipher(row.create(random.data(), length))) << length;
        }
    EXPECT_EQ(rows, CIPHER_ROW_COUNT);
}

TEST(CipherKeys, DesIgnoresParity)
{
    const Bytes plain = randomBytes(80, 50);
    for (std::uint32_t seed = 0; seed < 20; ++seed) {
        const Bytes key = randomBytes(8, 51 + seed), cipher = ecb(*makeCipher(0x83, key), true, plain);
        for (std::size_t bit = 0; bit < 64; ++bit) {
            Bytes other = key;
            other[bit / 8] ^= static_cast<std::uint8_t>(1u << bit % 8);
            EXPECT_EQ(ecb(*makeCipher(0x83, other), true, plain) == cipher, bit % 8 == 0) << bit;
        }
    }
}

} // namespace
} // namespace toolbelt::test
