// Processor features, and the routines of a cipher against each other.
#include "crypto/cipher/rijndael_tiers.h"
#include "crypto/cipher/wide.h"
#include "tests/cipher/cipher_support.h"

namespace toolbelt::test {
namespace {

TEST(CpuFeatures, AreThoseThatTheCompilerFindsAndCanBeLimited)
{
    __builtin_cpu_init();
    const std::uint32_t detected = cpu::detectedFeatures();
    const std::pair<std::uint32_t, bool> features[] = {
        {cpu::SSE2, __builtin_cpu_supports("sse2")},
        {cpu::SSSE3, __builtin_cpu_supports("ssse3")},
        {cpu::AES, __builtin_cpu_supports("aes")},
        {cpu::AVX2, __builtin_cpu_supports("avx2")},
        {cpu::AVX512, __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
                          __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl")},
        {cpu::IFMA, __builtin_cpu_supports("avx512ifma")},
        {cpu::VAES, __builtin_cpu_supports("vaes") && __builtin_cpu_supports("avx2")},
        {cpu::VBMI, __builtin_cpu_supports("avx512vbmi")}};
    for (const auto& [bit, isThere] : features) EXPECT_EQ((detected & bit) != 0, isThere) << bit;

    char text[64];
    EXPECT_EQ(cpu::limitFeatures(0), 0u);
    EXPECT_FALSE(cpu::has(cpu::SSE2));
    EXPECT_EQ(cpu::nameFeaturesInUse(text, sizeof text), 8u);
    EXPECT_STREQ(text, "portable");
    const FeatureLimit limit(cpu::AES | cpu::SSE2);
    EXPECT_EQ(cpu::featuresInUse(), detected & (cpu::AES | cpu::SSE2));
    if (!cpu::has(cpu::AES | cpu::SSE2)) GTEST_SKIP() << "names not compared, no AES instructions";
    EXPECT_EQ(cpu::nameFeaturesInUse(text, 7), 8u);
    EXPECT_STREQ(text, "sse2 a"); // cut off
    cpu::nameFeaturesInUse(text, sizeof text);
    EXPECT_STREQ(text, "sse2 aes");
    EXPECT_EQ(cpu::nameFeaturesInUse(nullptr, 0), 8u);
}

// One block at a time, which no twin takes.
Bytes blockByBlock(cSymAlg& cipher, bool encrypt, std::uint32_t size, const Bytes& in)
{
    Bytes out(in.size());
    for (std::size_t at = 0; at < in.size(); at += size) {
        const auto transform = encrypt ? &cSymAlg::encryptBlocks : &cSymAlg::decryptBlocks;
        EXPECT_EQ((cipher.*transform)(&in[at], &out[at], static_cast<std::int32_t>(size)), CRYPT_OK);
    }
    return out;
}

// Every cipher, in whole numbers of blocks from none to more than any twin takes at once.
TEST(CipherTiers, GiveTheSameForEveryNumberOfBlocksInEveryMode)
{
    // And AES instructions on the narrower registers, where the wider ones would serve.
    std::vector<std::uint32_t> steps = featureSteps();
    steps.push_back(cpu::detectedFeatures() & ~cpu::AVX512);
    std::vector<std::size_t> sizes = {31, 32, 33, 48, 64, 70, 300};
    for (std::size_t blocks = 0; blocks <= 20; ++blocks) sizes.push_back(blocks);
    for (std::uint32_t row = 1; row < CIPHER_ROW_COUNT; ++row) {
        const auto& [id, create, keySize, blockSize] = cipherRows[row];
        const std::uint32_t size = blockSize();
        const Bytes key = randomBytes(keySize(nullptr), 30), iv = randomBytes(size, 34);
        const Cipher portable = [&, chosen = id] {
            const FeatureLimit limit(0);
            return makeCipher(chosen, key);
        }();
        for (const std::uint32_t features : steps) {
            const FeatureLimit limit(features);
            const Cipher fast = makeCipher(id, key);
            if (id == 9) {
                ASSERT_EQ(rijndaelTier(*portable), nullptr);
                const bool instructions = cpu::has(cpu::AES | cpu::SSE2);
                EXPECT_EQ(rijndaelTier(*fast), !instructions                       ? nullptr
                                               : cpu::has(cpu::VAES | cpu::AVX512) ? &rijndaelVaes512
                                               : cpu::has(cpu::VAES)               ? &rijndaelVaes
                                                                                   : &rijndaelAesni);
            }
            for (const std::size_t blocks : sizes) {
                SCOPED_TRACE(testing::Message() << cipherNames[row] << ", " << blocks << " blocks, " << features);
                const Bytes in = randomBytes(size * blocks, 31);
                ASSERT_EQ(ecb(*fast, true, in), blockByBlock(*portable, true, size, in));
                ASSERT_EQ(ecb(*fast, false, in), blockByBlock(*portable, false, size, in));
                for (const std::uint32_t mode : {SYM_MODE_CBC, SYM_MODE_CBC_WORDSWAP, SYM_MODE_CFB})
                    for (const bool encrypt : {true, false}) {
                        fast->setMode(mode);
                        portable->setMode(mode);
                        const Bytes expected = chained(*portable, encrypt, iv, in);
                        ASSERT_EQ(chained(*fast, encrypt, iv, in), expected) << mode << encrypt;
                        Bytes inPlace = in;
                        const auto run = encrypt ? fast->modeEncrypt : fast->modeDecrypt;
                        ASSERT_EQ(run(fast.get(), iv.data(), inPlace.data(), inPlace.data(), lengthOf(in)), CRYPT_OK);
                        ASSERT_EQ(inPlace, expected) << mode << encrypt << " in place";
                    }
            }
        }
    }
}

// A wide twin takes whole registers of blocks, touches none of the others, and does what a narrower one does.
TEST(CipherTiers, TakeAsManyBlocksAsTheyCanSideBySide)
{
    struct Twin
    {
        WideBlocks* routine;
        std::uint32_t features, blocks;
    };
    const struct
    {
        std::uint32_t size, keyBytes;
        std::vector<Twin> twins;
    } ciphers[] = {
        {8, 32, {{gostDecryptAvx2, cpu::AVX2, 8}, {gostDecryptAvx512, cpu::AVX512 | cpu::VBMI, 16}}},
        {8, 104, {{ideaTransformAvx2, cpu::AVX2, 16}, {ideaTransformAvx512, cpu::AVX512, 32}}},
        {16, 176, {{rc6DecryptAvx2, cpu::AVX2, 8}, {rc6DecryptAvx512, cpu::AVX512, 16}}},
        {16, 528, {{serpentDecryptAvx2, cpu::AVX2, 8}, {serpentDecryptAvx512, cpu::AVX512, 16}}},
    };
    for (const auto& [size, keyBytes, twins] : ciphers) {
        const Bytes keys = randomBytes(keyBytes, 40);
        for (std::uint32_t blocks = 0; blocks <= 70; ++blocks) {
            const Bytes in = randomBytes(size * blocks, 41);
            Bytes narrow;
            for (const Twin& twin : twins) {
                if (!cpu::has(twin.features)) continue;
                SCOPED_TRACE(testing::Message() << size << " by " << twin.blocks << ", " << blocks << " blocks");
                Bytes out = in;
                const std::uint32_t done = twin.routine(keys.data(), out.data(), out.data(), blocks);
                ASSERT_EQ(done, blocks / twin.blocks * twin.blocks);
                const auto behind = static_cast<std::ptrdiff_t>(done * size);
                ASSERT_TRUE(std::equal(out.begin() + behind, out.end(), in.begin() + behind));
                const std::size_t both = narrow.empty() ? 0 : done * size;
                ASSERT_TRUE(std::equal(out.data(), out.data() + both, narrow.data()));
                narrow = out;
            }
        }
    }
}

} // namespace
} // namespace toolbelt::test
