// The chaining itself, over a cipher made for the test: statuses, odd block sizes, how many blocks are handed over.
#include <algorithm>

#include "tests/cipher/cipher_support.h"

namespace toolbelt::test {
namespace {

// Adds the position in the block and a constant to each byte, and writes down how it is called.
struct Recorder final : cSymAlg
{
    explicit Recorder(std::uint32_t size) : blockSize(size) {}
    std::uint32_t getSizes(std::uint32_t* block, std::uint32_t* key) const override
    {
        *block = blockSize;
        *key = 0;
        return sizesKnown;
    }
    Status encryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return transform(in, out, length, 1);
    }
    Status decryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return transform(in, out, length, -1);
    }
    Status transform(const std::uint8_t* in, std::uint8_t* out, std::int32_t length, int sign)
    {
        calls.push_back(static_cast<std::uint32_t>(length));
        if (status == CRYPT_OK)
            for (std::uint32_t i = 0; i < calls.back(); ++i)
                out[i] = static_cast<std::uint8_t>(in[i] + sign * static_cast<int>(i % blockSize + 77));
        return status;
    }

    std::uint32_t blockSize, sizesKnown = 1;
    Status status = CRYPT_OK;
    std::vector<std::uint32_t> calls;
};

TEST(Chaining, StatusesOfTheCipherAndItsSizes)
{
    Recorder cipher(8);
    const Bytes in = randomBytes(24, 20);
    Bytes out(24);
    const auto both = [&](std::int32_t length) {
        const Status encrypted = cipher.modeEncrypt(&cipher, nullptr, in.data(), out.data(), length);
        EXPECT_EQ(cipher.modeDecrypt(&cipher, nullptr, in.data(), out.data(), length), encrypted);
        return encrypted;
    };
    for (const std::uint32_t mode : {SYM_MODE_CBC, SYM_MODE_CBC_WORDSWAP, SYM_MODE_CFB}) {
        cipher.setMode(mode);
        cipher.sizesKnown = 0;
        EXPECT_EQ(both(24), 24);
        EXPECT_EQ(both(-1), 24) << "the sizes come first";
        cipher.sizesKnown = 1;
        cipher.status = 7; // CBC does not look at it, CFB passes it on
        EXPECT_EQ(both(24), mode == SYM_MODE_CFB ? 7 : CRYPT_OK);
        cipher.status = CRYPT_OK;
        EXPECT_EQ(both(24), CRYPT_OK) << "the object stays usable";
        if (mode == SYM_MODE_CFB) continue;
        cipher.blockSize = 0x80000000; // two of them are 0 in 32 bits
        EXPECT_EQ(both(0), 26);
        cipher.blockSize = 8;
    }
    // The fixed fields: the virtual table, two pointers, a number, and the two modes.
    const auto offset = [&](const void* field) {
        return static_cast<std::size_t>(static_cast<const char*>(field) - reinterpret_cast<const char*>(&cipher));
    };
    EXPECT_EQ(offset(&cipher.modeEncrypt), 4 * sizeof(void*));
    EXPECT_EQ(offset(&cipher.modeDecrypt), 5 * sizeof(void*));
}

TEST(Chaining, AnyBlockSizeAndWholeBatches)
{
    for (const std::uint32_t blockSize : {1u, 3u, 4u, 7u, 8u, 16u, 20u, 1000u, 5000u})
        for (const std::uint32_t mode : {SYM_MODE_CBC, SYM_MODE_CBC_WORDSWAP, SYM_MODE_CFB, 77u}) { // any other: CBC
            SCOPED_TRACE(testing::Message() << "block " << blockSize << ", mode " << mode);
            Recorder cipher(blockSize);
            cipher.setMode(mode);
            const Bytes iv = randomBytes(blockSize, 21);
            const Bytes plain =
                randomBytes((12345 / blockSize + 2) * blockSize - (mode == SYM_MODE_CFB ? blockSize / 2 : 0), 22);
            const Bytes encrypted = chained(cipher, true, iv, plain);
            EXPECT_EQ(encrypted, modelEncrypt(cipher, mode, iv, plain));
            EXPECT_EQ(chained(cipher, true, {}, plain), chained(cipher, true, Bytes(blockSize), plain));
            cipher.calls.clear();
            EXPECT_EQ(chained(cipher, false, iv, encrypted), plain);
            // Decryption hands over all it can: about a kilobyte at once, never less than a block.
            EXPECT_GE(*std::max_element(cipher.calls.begin(), cipher.calls.end()), std::max(blockSize, 1000u));
            EXPECT_LE(cipher.calls.size(), plain.size() / std::max(blockSize, 1000u) + 2);
        }
}

} // namespace
} // namespace toolbelt::test
