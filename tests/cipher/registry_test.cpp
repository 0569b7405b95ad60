// The registry as documented, and the key rules of its members.
#include <cxxabi.h>

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

// A member whose key is always filled up to, or cut down to, one length. Each key lies in a block of its exact size.
TEST(CipherKeys, FixedLengthsArePaddedWithZerosAndCut)
{
    const Bytes plain = randomBytes(64, 2);
    for (const std::int32_t id : {0x83, 2, 1, 3, 0x85, 0x8A, 10, 0x89}) {
        const std::size_t full = rowOf(id).keySize(nullptr);
        const Bytes key = randomBytes(full + 9, 3);
        for (const std::size_t length :
             {std::size_t(0), std::size_t(1), full / 2, full - 1, full, full + 1, full + 9}) {
            SCOPED_TRACE(testing::Message() << "id " << id << ", " << length << " bytes");
            const Bytes given(key.begin(), key.begin() + static_cast<std::ptrdiff_t>(length));
            Bytes equivalent = given;
            equivalent.resize(full);
            const Cipher cipher = makeCipher(id, given), twin = makeCipher(id, equivalent);
            EXPECT_TRUE(cipher && twin);
            if (!cipher || !twin) continue;
            EXPECT_EQ(ecb(*cipher, true, plain), ecb(*twin, true, plain));
            EXPECT_EQ(ecb(*cipher, false, plain), ecb(*twin, false, plain));
        }
    }
}

TEST(CipherKeys, RijndaelTakesItsThreeLengthsInBytesOrBits)
{
    const Bytes plain = randomBytes(32, 4);
    for (std::uint32_t length = 0; length <= 300; ++length) {
        const bool bits = length == 128 || length == 192 || length == 256;
        const std::uint32_t bytes = bits ? length / 8 : length;
        const Bytes key = randomBytes(bytes, 5); // no more than that may be read
        for (const std::int32_t id : {7, 8, 9, 0x88}) {
            const Cipher cipher(rowOf(id).create(key.data(), length));
            ASSERT_EQ(cipher != nullptr, bits || length == 16 || length == 24 || length == 32) << length;
            if (!cipher) continue;
            EXPECT_EQ(ecb(*cipher, true, plain), ecb(*makeCipher(9, key), true, plain));
        }
    }
    const Bytes zeros(32);
    EXPECT_NE(ecb(*makeCipher(9, Bytes(16)), true, plain), ecb(*makeCipher(9, zeros), true, plain));
}

TEST(CipherKeys, VariableLengthsAreStoredAndOthersRefused)
{
    for (const std::int32_t id : {11, 12, 13, 26, 27, 28, 0x87})
        for (const std::uint32_t length :
             {0u, 1u, 8u, 15u, 16u, 17u, 24u, 32u, 33u, 64u, 128u, 192u, 255u, 256u, 1000u}) {
            SCOPED_TRACE(testing::Message() << "id " << id << ", " << length << " bytes");
            const bool accepted =
                id == 0x87 ? length >= 1 && length <= 255 : length == 16 || length == 24 || length == 32;
            const Cipher cipher = makeCipher(id, randomBytes(length, 6));
            ASSERT_EQ(cipher != nullptr, accepted);
            if (!cipher) continue;
            std::uint32_t blockSize = 0, keySize = 0;
            cipher->getSizes(&blockSize, &keySize);
            EXPECT_EQ(keySize, length);
            const Bytes plain = randomBytes(48, length);
            EXPECT_EQ(ecb(*cipher, false, ecb(*cipher, true, plain)), plain);
        }
    // The row names the class alone: the schedule follows the length of the key.
    const Bytes key = randomBytes(32, 7), plain = randomBytes(16, 8);
    EXPECT_EQ(ecb(*makeCipher(11, key), true, plain), ecb(*makeCipher(13, key), true, plain));
    EXPECT_EQ(ecb(*makeCipher(27, key), true, plain), ecb(*makeCipher(28, key), true, plain));
    for (const CipherRow& row : cipherRows) {
        EXPECT_EQ(Cipher(row.create(nullptr, 16)) == nullptr, row.id != 0)
            << row.id << ": no key where a length says one";
    }
}

} // namespace
} // namespace toolbelt::test
