// What holds for every row of the registry: refused lengths and the order of words; and the identity.
#include <algorithm>

#include "tests/cipher/cipher_support.h"

namespace toolbelt::test {
namespace {

TEST(CipherContract, BadLengthsAndNoLength)
{
    for (std::uint32_t row = 1; row < CIPHER_ROW_COUNT; ++row) {
        SCOPED_TRACE(cipherNames[row]);
        const Cipher cipher = makeCipher(cipherRows[row].id, randomBytes(cipherRows[row].keySize(nullptr), 10));
        ASSERT_TRUE(cipher);
        const auto block = static_cast<std::int32_t>(cipherRows[row].blockSize());
        for (const std::uint32_t mode : {SYM_MODE_CBC, SYM_MODE_CBC_WORDSWAP, SYM_MODE_CFB}) {
            cipher->setMode(mode);
            const auto apply = [&](int operation, const std::uint8_t* in, std::uint8_t* out, std::int32_t length) {
                if (operation == 0) return cipher->encryptBlocks(in, out, length);
                if (operation == 1) return cipher->decryptBlocks(in, out, length);
                return (operation == 2 ? cipher->modeEncrypt : cipher->modeDecrypt)(cipher.get(), nullptr, in, out,
                                                                                    length);
            };
            for (int i = 0; i < 4; ++i) {
                const bool anyLength = mode == SYM_MODE_CFB && i >= 2;
                Bytes in(64, 1), out(64, 2);
                for (const std::int32_t length : {1, block - 1, block + 1, 3 * block + 7, -1, -block, -2147483647 - 1})
                    if (!anyLength || length < 0) {
                        EXPECT_EQ(apply(i, in.data(), out.data(), length), 26) << length;
                    }
                EXPECT_EQ(apply(i, in.data(), out.data(), 0), CRYPT_OK);
                EXPECT_EQ(apply(i, nullptr, nullptr, 0), CRYPT_OK);
                EXPECT_EQ(out, Bytes(64, 2));
            }
        }
    }
}

TEST(CipherContract, IdentityCopiesAnyLengthAndHasNoCbc)
{
    const Cipher none = makeCipher(0, {});
    for (const std::size_t length : {0u, 1u, 15u, 1000u}) {
        const Bytes in = randomBytes(length, 14);
        none->setMode(SYM_MODE_CFB);
        EXPECT_EQ(ecb(*none, true, in), in);
        EXPECT_EQ(ecb(*none, false, in), in);
        EXPECT_EQ(chained(*none, true, {}, in), in);
        EXPECT_EQ(chained(*none, false, {}, in), in);
        Bytes out(length, 9);
        for (const std::uint32_t mode : {SYM_MODE_CBC, SYM_MODE_CBC_WORDSWAP}) {
            none->setMode(mode);
            EXPECT_EQ(none->modeEncrypt(none.get(), nullptr, in.data(), out.data(), lengthOf(in)), 26);
            EXPECT_EQ(none->modeDecrypt(none.get(), nullptr, in.data(), out.data(), lengthOf(in)), 26);
        }
        EXPECT_EQ(out, Bytes(length, 9));
    }
    EXPECT_EQ(none->encryptBlocks(nullptr, nullptr, -1), 26);
}

TEST(CipherContract, WordOrderIsReadByBlowfishAlone)
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
        const bool blowfish = row.id == 4 || row.id == 0x80 || row.id == 0x81;
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
