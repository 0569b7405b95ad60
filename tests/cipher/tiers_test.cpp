// Processor features, the routines of Rijndael against each other, and GOST against a model written from its standard.
#include "crypto/cipher/rijndael_tiers.h"
#include "crypto/cipher/wide.h"
#include "tests/cipher/cipher_support.h"

namespace toolbelt::test {
namespace {

std::string featuresHere()
{
    char text[64];
    cpu::nameFeaturesInUse(text, sizeof text);
    return text;
}

TEST(CpuFeatures, AreThoseThatTheCompilerFindsAndCanBeLimited)
{
    __builtin_cpu_init();
    const std::uint32_t detected = cpu::detectedFeatures();
    const std::string here = featuresHere();
    RecordProperty("features", here);
    EXPECT_EQ((detected & cpu::SSE2) != 0, __builtin_cpu_supports("sse2") != 0);
    EXPECT_EQ((detected & cpu::SSSE3) != 0, __builtin_cpu_supports("ssse3") != 0);
    EXPECT_EQ((detected & cpu::AES) != 0, __builtin_cpu_supports("aes") != 0);
    EXPECT_EQ((detected & cpu::AVX2) != 0, __builtin_cpu_supports("avx2") != 0);
    EXPECT_EQ((detected & cpu::AVX512) != 0, __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
                                                 __builtin_cpu_supports("avx512bw") &&
                                                 __builtin_cpu_supports("avx512vl"));
    EXPECT_EQ((detected & cpu::IFMA) != 0, __builtin_cpu_supports("avx512ifma") != 0);
    EXPECT_EQ((detected & cpu::VAES) != 0, __builtin_cpu_supports("vaes") && __builtin_cpu_supports("avx2"));

    char text[64];
    EXPECT_EQ(cpu::limitFeatures(0), 0u);
    EXPECT_FALSE(cpu::has(cpu::SSE2));
    EXPECT_EQ(cpu::nameFeaturesInUse(text, sizeof text), 8u);
    EXPECT_STREQ(text, "portable");
    const FeatureLimit limit(cpu::AES | cpu::SSE2);
    EXPECT_EQ(cpu::featuresInUse(), detected & (cpu::AES | cpu::SSE2));
    if (!cpu::has(cpu::AES | cpu::SSE2)) GTEST_SKIP() << "names not compared, no AES instructions; in use: " << here;
    EXPECT_EQ(cpu::nameFeaturesInUse(text, 7), 8u);
    EXPECT_STREQ(text, "sse2 a"); // cut off
    cpu::nameFeaturesInUse(text, sizeof text);
    EXPECT_STREQ(text, "sse2 aes");
    EXPECT_EQ(cpu::nameFeaturesInUse(nullptr, 0), 8u);
}

// The ciphers with faster twins, in whole numbers of blocks from none to more than any twin takes at once.
TEST(CipherTiers, GiveTheSameForEveryNumberOfBlocksInEveryMode)
{
    const struct
    {
        std::int32_t id;
        std::uint32_t keyLength;
    } ciphers[] = {{9, 16}, {9, 24}, {9, 32}, {1, 16}, {0x85, 32}, {0x87, 32}, {0x89, 32}};
    for (const std::uint32_t features : featureSteps())
        for (const auto& [id, keyLength] : ciphers) {
            const std::uint32_t size = rowOf(id).blockSize();
            const Bytes key = randomBytes(keyLength, 30 + keyLength), iv = randomBytes(size, 34);
            const Cipher portable = [&, chosen = id] {
                const FeatureLimit limit(0);
                return makeCipher(chosen, key);
            }();
            const FeatureLimit limit(features);
            const Cipher fast = makeCipher(id, key);
            if (id == 9) {
                ASSERT_EQ(rijndaelTier(*portable), nullptr);
                const bool instructions = cpu::has(cpu::AES | cpu::SSE2);
                EXPECT_EQ(rijndaelTier(*fast), !instructions         ? nullptr
                                               : cpu::has(cpu::VAES) ? &rijndaelVaes
                                                                     : &rijndaelAesni);
            }
            for (std::size_t blocks = 0; blocks <= 40; ++blocks) {
                SCOPED_TRACE(testing::Message() << "cipher " << id << ", " << blocks << " blocks, " << features);
                const Bytes in = randomBytes(size * blocks, 31);
                ASSERT_EQ(ecb(*fast, true, in), ecb(*portable, true, in));
                ASSERT_EQ(ecb(*fast, false, in), ecb(*portable, false, in));
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

#if defined(__i386__)
TEST(CipherTiers, SurviveAnyStackOfFourByteAlignment)
{
    if (!cpu::has(cpu::AES | cpu::SSE2)) GTEST_SKIP() << "no AES instructions; in use: " << featuresHere();
    const Bytes keys = randomBytes(16 * 15, 32), in = randomBytes(16 * 13, 33), iv = randomBytes(16, 34);
    const auto* roundKeys = reinterpret_cast<const std::uint32_t*>(keys.data());
    const auto survives = [&](RijndaelChained* routine) {
        Bytes expected(in.size()), chain = iv;
        routine(roundKeys, 14, chain.data(), in.data(), expected.data(), 13);
        for (std::uint32_t off = 0; off < 16; off += 4) {
            Bytes out(in.size());
            chain = iv;
            callMisaligned(off, reinterpret_cast<const void*>(routine),
                           {word(keys.data()), 14, word(chain.data()), word(in.data()), word(out.data()), 13});
            EXPECT_EQ(out, expected) << off;
        }
    };
    for (RijndaelChained* routine :
         {rijndaelCbcEncryptAesni, rijndaelCfbEncryptAesni, rijndaelAesni.cbcDecrypt, rijndaelAesni.cfbDecrypt})
        survives(routine);
    if (cpu::has(cpu::VAES))
        for (RijndaelChained* routine : {rijndaelVaes.cbcDecrypt, rijndaelVaes.cfbDecrypt}) survives(routine);
    if (cpu::has(cpu::AVX2))
        for (WideBlocks* routine : {gostDecryptAvx2, ideaTransformAvx2, rc6DecryptAvx2, serpentDecryptAvx2}) {
            const Bytes wideKeys = randomBytes(1000, 35), wideIn = randomBytes(16 * 16, 36);
            Bytes expected(wideIn.size());
            EXPECT_EQ(routine(wideKeys.data(), wideIn.data(), expected.data(), 16), 16u);
            for (std::uint32_t off = 0; off < 16; off += 4) {
                Bytes out(wideIn.size());
                callMisaligned(off, reinterpret_cast<const void*>(routine),
                               {word(wideKeys.data()), word(wideIn.data()), word(out.data()), 16});
                EXPECT_EQ(out, expected) << off;
            }
        }
}
#endif

// GOST 28147-89 by the letter: 32 rounds on two numbers, nibble after nibble, the halves exchanged after all rounds but
// the last.
Bytes gostModel(const Bytes& key, bool encrypt, const Bytes& in)
{
    static const char* const boxes[8] = {"BC1A7E2D3F058496", "FC6A7D0853B24E19", "6DA24915C7083FEB",
                                         "DEABF53C12074869", "624CAD8359B70EF1", "E2D4B57CA980F613",
                                         "2C3B9DF71E86045A", "7E8C3B10425A69FD"};
    const auto read = [](const Bytes& bytes, std::size_t at) {
        std::uint64_t number = 0;
        for (std::size_t i = 4; i-- > 0;) number = number * 256 + bytes[at + i];
        return number;
    };
    Bytes out;
    for (std::size_t at = 0; at < in.size(); at += 8) {
        std::uint64_t a = read(in, at), b = read(in, at + 4);
        for (std::size_t round = 1; round <= 32; ++round) {
            const std::size_t upwards = encrypt ? 24 : 8;
            const std::size_t x = round <= upwards ? (round - 1) % 8 : 7 - (round - 1) % 8;
            const std::uint64_t sum = (a + read(key, 4 * x)) % 4294967296u;
            std::uint64_t s = 0, weight = 1;
            for (std::size_t box = 0; box < 8; ++box, weight *= 16)
                s += weight * std::stoul(std::string(1, boxes[box][sum / weight % 16]), nullptr, 16);
            const std::uint64_t rotated = s * 2048 % 4294967296u + s / 2097152;
            if (round < 32) {
                const std::uint64_t old = a;
                a = b ^ rotated;
                b = old;
            } else {
                b ^= rotated;
            }
        }
        for (const std::uint64_t half : {a, b})
            for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<std::uint8_t>(half >> shift));
    }
    return out;
}

TEST(Gost, IsTheModel)
{
    for (std::uint32_t seed = 0; seed < 20; ++seed) {
        const Bytes key = randomBytes(32, 40 + seed), in = randomBytes(80, 60 + seed);
        const Cipher cipher = makeCipher(0x85, key);
        EXPECT_EQ(ecb(*cipher, true, in), gostModel(key, true, in));
        EXPECT_EQ(ecb(*cipher, false, in), gostModel(key, false, in));
    }
}

} // namespace
} // namespace toolbelt::test
