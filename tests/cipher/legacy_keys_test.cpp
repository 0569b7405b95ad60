// The 64-bit ciphers: key rules, published checks beyond single blocks, and the word order of Blowfish.
#include <algorithm>

#include "tests/cipher/cipher_support.h"

namespace toolbelt::test {
namespace {

Bytes part(const Bytes& bytes, std::size_t from, std::size_t size)
{
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(from);
    return Bytes(begin, begin + static_cast<std::ptrdiff_t>(size));
}

Bytes encrypted(std::int32_t id, const Bytes& key, const Bytes& plain)
{
    return ecb(*makeCipher(id, key), true, plain);
}

std::uint32_t keySizeOf(const cSymAlg& cipher)
{
    std::uint32_t blockSize = 0, keySize = 0;
    cipher.getSizes(&blockSize, &keySize);
    return keySize;
}

constexpr std::int32_t CAST = 3, BLOWFISH = 4, DES = 0x83, RC2_40 = 100, RC2_128 = 101;

TEST(LegacyKeys, DesIgnoresParity)
{
    const Bytes plain = randomBytes(800, 50);
    for (std::uint32_t seed = 0; seed < 20; ++seed) {
        const Bytes key = randomBytes(8, 51 + seed);
        const Bytes cipher = encrypted(DES, key, plain);
        for (std::size_t bit = 0; bit < 64; ++bit) {
            Bytes other = key;
            other[bit / 8] ^= static_cast<std::uint8_t>(1u << bit % 8);
            EXPECT_EQ(encrypted(DES, other, plain) == cipher, bit % 8 == 0) << bit;
        }
    }
}

TEST(LegacyKeys, Cast128OfTheRfcAndWithShortKeys)
{
    Bytes a, b;
    std::uint32_t done = 0, checkpoints = 0, blocks = 0;
    for (const Record& record : readVectors("tables/cast128-sboxes.txt")) {
        SCOPED_TRACE(record.where);
        if (record.has("iterations")) {
            const std::uint32_t iterations = record.number("iterations");
            if (iterations > 1000) continue; // a million would take seconds
            if (iterations == 0) a = record.bytes("a"), b = record.bytes("b");
            for (; done < iterations; ++done) {
                a = encrypted(CAST, b, a);
                b = encrypted(CAST, a, b);
            }
            EXPECT_EQ(toHex(a), record.get("a"));
            EXPECT_EQ(toHex(b), record.get("b"));
            ++checkpoints;
        } else if (record.has("rounds")) {
            // The short keys of the RFC run 12 rounds there, and 16 here.
            const bool full = record.number("rounds") == 16;
            EXPECT_EQ(toHex(encrypted(CAST, record.bytes("key"), record.bytes("plain"))) == record.get("cipher"), full);
            ++blocks;
        }
    }
    EXPECT_EQ(checkpoints, 5u);
    EXPECT_EQ(blocks, 3u);
    // openssl enc -cast5-ecb, which fills the key up as well.
    EXPECT_EQ(toHex(encrypted(CAST, fromHex("0123456712"), fromHex("000102030405060708090a0b0c0d0e0f"))),
              "25d54802e8449169d8cd7aa0bb507c80");
}

TEST(LegacyKeys, Rc2EffectiveBitsFollowTheKeyInBothClasses)
{
    const auto check = [](const Bytes& key, const Bytes& plain, const std::string& cipher) {
        SCOPED_TRACE(testing::Message() << key.size() << " bytes");
        for (const std::int32_t id : {RC2_40, RC2_128}) {
            const Cipher rc2 = makeCipher(id, key);
            EXPECT_EQ(toHex(ecb(*rc2, true, plain)), cipher);
            EXPECT_EQ(toHex(ecb(*rc2, false, fromHex(cipher))), toHex(plain));
            EXPECT_EQ(keySizeOf(*rc2), id == RC2_40 ? 5u : 16u) << "the nominal one";
        }
    };
    std::uint32_t checked = 0;
    for (const Record& record : readVectors("tables/rc2-pitable.txt"))
        if (record.has("effective-bits") && record.number("effective-bits") == 8 * record.bytes("key").size()) {
            check(record.bytes("key"), record.bytes("plain"), record.get("cipher"));
            ++checked;
        }
    EXPECT_EQ(checked, 3u);

    // From libcrypto (RC2_set_key, RC2_ecb_encrypt) for the key bytes 1, 8, 15, ...
    const Bytes plain = fromHex("000102030405060708090a0b0c0d0e0f");
    const auto key = [](std::size_t size) {
        Bytes bytes(size);
        for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(7 * i + 1);
        return bytes;
    };
    check(key(1), plain, "64dc1a3f1a5518ee949e93ca42c09d68");
    check(key(5), plain, "442123855f823858f121852c50511890");
    check(key(33), plain, "bcf1a2f171d279d4da89fe3cc453ef48");
    check(key(127), plain, "ca4353c8b2ee3a66c615ff68dd98689f");
    check(key(128), plain, "18b98d2e02bda9c41d9236d5bdf79f34");
    EXPECT_FALSE(makeCipher(RC2_40, key(0)));
    for (const std::int32_t id : {RC2_40, RC2_128})
        for (const std::uint32_t length : {0u, 129u, 256u, 0x80000001u, ~0u})
            EXPECT_FALSE(Cipher(rowOf(id).create(key(128).data(), length))) << length;

    // openssl enc -rc2-40-cbc -K 0123456789 -iv 0011223344556677
    const Cipher cbc = makeCipher(RC2_40, fromHex("0123456789"));
    EXPECT_EQ(toHex(chained(*cbc, true, fromHex("0011223344556677"), plain)), "4561bb9a92a9c3783990937b1b3986fa");
}

TEST(LegacyKeys, BlowfishTakesFiveToFiftySixBytes)
{
    const Bytes plain = randomBytes(64, 72), key = randomBytes(70, 73);
    for (const std::int32_t id : {BLOWFISH, 0x80, 0x81})
        for (std::size_t length = 0; length <= key.size(); ++length) {
            SCOPED_TRACE(testing::Message() << "id " << id << ", " << length << " bytes");
            const Bytes given = part(key, 0, length);
            Bytes used = given;
            used.resize(std::clamp<std::size_t>(length, 5, 56));
            const Cipher cipher = makeCipher(id, given);
            EXPECT_EQ(keySizeOf(*cipher), used.size());
            EXPECT_EQ(ecb(*cipher, true, plain), encrypted(BLOWFISH, used, plain));
            // The key is repeated, so that zeros at its end count.
            if (length > 5 && length <= 56) {
                EXPECT_NE(ecb(*cipher, true, plain), encrypted(id, part(key, 0, length - 1), plain));
            }
        }
}

TEST(LegacyKeys, WordOrderIsReadByBlowfishAlone)
{
    const auto swapped = [](Bytes bytes) {
        for (std::size_t i = 0; i < bytes.size(); i += 4)
            std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(i),
                         bytes.begin() + static_cast<std::ptrdiff_t>(i + 4));
        return bytes;
    };
    for (const CipherRow& row : cipherRows) {
        SCOPED_TRACE(row.id);
        const Cipher cipher = makeCipher(row.id, randomBytes(row.keySize(nullptr), 74));
        const Bytes plain = randomBytes(80, 75), big = ecb(*cipher, true, plain);
        const Bytes bigOfSwapped = ecb(*cipher, true, swapped(plain));
        const bool blowfish = row.id == BLOWFISH || row.id == 0x80 || row.id == 0x81;
        cipher->setLittleEndianBlocks(true);
        const Bytes little = ecb(*cipher, true, plain);
        EXPECT_EQ(little, blowfish ? swapped(bigOfSwapped) : big);
        EXPECT_EQ(ecb(*cipher, false, little), plain);
        cipher->setLittleEndianBlocks(false);
        EXPECT_EQ(ecb(*cipher, true, plain), big);
    }
}

} // namespace
} // namespace toolbelt::test
