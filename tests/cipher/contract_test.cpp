// What holds for every row of the registry: lengths, buffers, modes.
#include <algorithm>

#include "tests/cipher/cipher_support.h"

namespace toolbelt::test {
namespace {

struct Subject
{
    const CipherRow& row;
    Cipher cipher;
    std::uint32_t blockSize;
};

// Calls check(subject) for each row but the identity's, with a key of the default length.
template <typename Check>
void forEachCipher(Check check)
{
    std::uint32_t checked = 0;
    for (std::uint32_t i = 1; i < CIPHER_ROW_COUNT; ++i) {
        const CipherRow& row = cipherRows[i];
        SCOPED_TRACE(cipherNames[i]);
        Subject subject = {row, makeCipher(row.id, randomBytes(row.keySize(nullptr), 10)), row.blockSize()};
        EXPECT_TRUE(subject.cipher);
        if (!subject.cipher) continue;
        check(subject);
        ++checked;
    }
    EXPECT_EQ(checked, 24u);
}

constexpr int OPERATIONS = 4; // two on blocks and, from CHAINED on, two that chain them
constexpr int CHAINED = 2;
Status apply(int operation, cSymAlg& c, const std::uint8_t* in, std::uint8_t* out, std::int32_t n)
{
    if (operation < CHAINED) return operation == 0 ? c.encryptBlocks(in, out, n) : c.decryptBlocks(in, out, n);
    return (operation == CHAINED ? c.modeEncrypt : c.modeDecrypt)(&c, nullptr, in, out, n);
}

// Guards on both sides, every alignment, in place and out of place: the output is written exactly, the input not at
// all.
void checkBuffers(cSymAlg& cipher, int operation, std::size_t length)
{
    const Bytes in = randomBytes(length, 11);
    Bytes expected(length);
    ASSERT_EQ(apply(operation, cipher, in.data(), expected.data(), lengthOf(in)), CRYPT_OK);
    for (std::size_t shift = 1; shift <= 4; ++shift) {
        Bytes source(shift, 0xC3), target(length + 16, 0x5A);
        source.insert(source.end(), in.begin(), in.end()); // its end is the end of the heap block
        const Bytes before = source;
        EXPECT_EQ(apply(operation, cipher, source.data() + shift, target.data() + shift, lengthOf(in)), CRYPT_OK);
        EXPECT_EQ(source, before);
        Bytes framed(length + 16, 0x5A);
        std::copy(expected.begin(), expected.end(), framed.begin() + static_cast<std::ptrdiff_t>(shift));
        EXPECT_EQ(target, framed) << "shifted by " << shift;

        EXPECT_EQ(apply(operation, cipher, source.data() + shift, source.data() + shift, lengthOf(in)), CRYPT_OK);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), source.begin() + static_cast<std::ptrdiff_t>(shift)))
            << "in place";
        EXPECT_TRUE(std::equal(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(shift), source.begin()));
    }
}

TEST(CipherContract, BuffersOfEveryOperationInEveryMode)
{
    forEachCipher([](Subject& s) {
        for (const std::uint32_t mode : {SYM_MODE_CBC, SYM_MODE_CBC_WORDSWAP, SYM_MODE_CFB}) {
            s.cipher->setMode(mode);
            for (int operation = 0; operation < OPERATIONS; ++operation)
                for (const std::uint32_t blocks : {1u, 7u, 131u}) {
                    SCOPED_TRACE(testing::Message() << "mode " << mode << ", " << blocks << " blocks");
                    checkBuffers(*s.cipher, operation, blocks * s.blockSize);
                }
        }
        checkBuffers(*s.cipher, CHAINED, 5); // CFB: any length
        checkBuffers(*s.cipher, CHAINED + 1, 21);
    });
}

TEST(CipherContract, BadLengthsAndNoLength)
{
    forEachCipher([](Subject& s) {
        const std::int32_t block = static_cast<std::int32_t>(s.blockSize);
        for (const std::uint32_t mode : {SYM_MODE_CBC, SYM_MODE_CBC_WORDSWAP, SYM_MODE_CFB}) {
            s.cipher->setMode(mode);
            for (int i = 0; i < OPERATIONS; ++i) {
                const bool anyLength = mode == SYM_MODE_CFB && i >= CHAINED;
                Bytes in(64, 1), out(64, 2);
                for (const std::int32_t length : {1, block - 1, block + 1, 3 * block + 7, -1, -block, -2147483647 - 1})
                    if (!anyLength || length < 0) {
                        EXPECT_EQ(apply(i, *s.cipher, in.data(), out.data(), length), 26) << length;
                    }
                EXPECT_EQ(apply(i, *s.cipher, in.data(), out.data(), 0), CRYPT_OK);
                EXPECT_EQ(apply(i, *s.cipher, nullptr, nullptr, 0), CRYPT_OK);
                EXPECT_EQ(out, Bytes(64, 2));
            }
        }
    });
}

TEST(CipherContract, ModesAreTheModels)
{
    forEachCipher([](Subject& s) {
        const Bytes iv = randomBytes(s.blockSize, 12);
        Bytes outputs[3];
        for (const std::uint32_t mode : {SYM_MODE_CBC, SYM_MODE_CBC_WORDSWAP, SYM_MODE_CFB}) {
            s.cipher->setMode(mode);
            for (std::size_t length :
                 {s.blockSize, 9 * s.blockSize, 1024 + s.blockSize, 2048u, 3 * 1024 + 5 * s.blockSize}) {
                if (mode == SYM_MODE_CFB) length -= 3;
                SCOPED_TRACE(testing::Message() << "mode " << mode << ", length " << length);
                const Bytes plain = randomBytes(length, 13);
                outputs[mode] = chained(*s.cipher, true, iv, plain);
                EXPECT_EQ(outputs[mode], modelEncrypt(*s.cipher, mode, iv, plain));
                EXPECT_EQ(chained(*s.cipher, false, iv, outputs[mode]), plain);
                EXPECT_EQ(chained(*s.cipher, true, {}, plain), chained(*s.cipher, true, Bytes(s.blockSize), plain));
            }
        }
        EXPECT_NE(outputs[SYM_MODE_CBC], outputs[SYM_MODE_CBC_WORDSWAP]);
        s.cipher->setMode(77); // any other number is CBC
        const Bytes plain = randomBytes(3 * s.blockSize, 18);
        EXPECT_EQ(chained(*s.cipher, true, iv, plain), modelEncrypt(*s.cipher, SYM_MODE_CBC, iv, plain));
    });
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

} // namespace
} // namespace toolbelt::test
