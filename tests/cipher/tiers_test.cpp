// Processor features, and the routines of a cipher against each other.
#include <algorithm>

#include "crypto/cipher/rijndael_tiers.h"
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

// Off by so many bytes, apart and in place: nothing is written around the output, and the input is left as it is.
template <typename Run>
void expectOnBuffers(Run run, const Bytes& in, const Bytes& expected, std::size_t shift)
{
    const auto framed = [shift](const Bytes& bytes) {
        Bytes result(bytes.size() + 2 * shift, 0xC3);
        std::copy(bytes.begin(), bytes.end(), result.begin() + static_cast<std::ptrdiff_t>(shift));
        return result;
    };
    Bytes source = framed(in), target = framed(Bytes(in.size(), 0x5A));
    ASSERT_EQ(run(source.data() + shift, target.data() + shift, lengthOf(in)), CRYPT_OK);
    ASSERT_TRUE(source == framed(in) && target == framed(expected));
    ASSERT_EQ(run(source.data() + shift, source.data() + shift, lengthOf(in)), CRYPT_OK);
    ASSERT_EQ(source, framed(expected)) << "in place";
}

// Every cipher against the model, which takes one block at a time as no twin does, in whole numbers of blocks from none
// to more than any twin takes at once; with CFB any length.
TEST(CipherTiers, AreTheModelForEveryNumberOfBlocksInEveryMode)
{
    // And AES instructions on the narrower registers, where the wider ones would serve.
    std::vector<std::uint32_t> steps = featureSteps();
    steps.push_back(cpu::detectedFeatures() & ~cpu::AVX512);
    std::vector<std::size_t> sizes = {31, 32, 33, 48, 64, 70, 300};
    for (std::size_t blocks = 0; blocks <= 20; ++blocks) sizes.push_back(blocks);
    for (std::uint32_t row = 1; row < CIPHER_ROW_COUNT; ++row) {
        const std::int32_t id = cipherRows[row].id;
        const std::uint32_t size = cipherRows[row].blockSize();
        const Bytes key = randomBytes(cipherRows[row].keySize(nullptr), 30), iv = randomBytes(size, 34);
        const Cipher portable = [&] {
            const FeatureLimit limit(0);
            return makeCipher(id, key);
        }();
        std::vector<Cipher> ciphers; // one a step
        for (const std::uint32_t features : steps) {
            const FeatureLimit limit(features);
            ciphers.push_back(makeCipher(id, key));
            if (id != 9) continue;
            EXPECT_EQ(rijndaelTier(*ciphers.back()), !cpu::has(cpu::AES | cpu::SSE2)     ? nullptr
                                                     : cpu::has(cpu::VAES | cpu::AVX512) ? &rijndaelVaes512
                                                     : cpu::has(cpu::VAES)               ? &rijndaelVaes
                                                                                         : &rijndaelAesni);
        }
        for (const std::size_t blocks : sizes)
            for (const std::uint32_t mode : {ECB, SYM_MODE_CBC, SYM_MODE_CBC_WORDSWAP, SYM_MODE_CFB}) {
                Bytes text = randomBytes(size * blocks, 31);
                if (mode == SYM_MODE_CFB && blocks != 0) text.resize(text.size() - blocks % size);
                const Bytes expected = modelEncrypt(*portable, mode, iv, text);
                for (std::size_t i = 0; i < steps.size(); ++i) {
                    SCOPED_TRACE(testing::Message()
                                 << cipherNames[row] << ", " << blocks << " blocks, mode " << mode << ", " << steps[i]);
                    const FeatureLimit limit(steps[i]);
                    cSymAlg& cipher = *ciphers[i];
                    cipher.setMode(mode);
                    const auto run = [&](bool encrypt, auto... buffers) {
                        if (mode != ECB)
                            return (encrypt ? cipher.modeEncrypt : cipher.modeDecrypt)(&cipher, iv.data(), buffers...);
                        return encrypt ? cipher.encryptBlocks(buffers...) : cipher.decryptBlocks(buffers...);
                    };
                    expectOnBuffers([&](auto... buffers) { return run(true, buffers...); }, text, expected, blocks % 5);
                    expectOnBuffers([&](auto... buffers) { return run(false, buffers...); }, expected, text,
                                    blocks % 5);
                    if (HasFatalFailure()) return;
                }
            }
    }
}

} // namespace
} // namespace toolbelt::test
