// Processor features, the routines of Rijndael against each other, and GOST against a model written from its standard.
#include "crypto/cipher/rijndael_aesni.h"
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

TEST(RijndaelTiers, GiveTheSameForEveryNumberOfBlocks)
{
    if (!cpu::has(cpu::AES | cpu::SSE2)) GTEST_SKIP() << "no AES instructions; in use: " << featuresHere();
    for (const std::uint32_t keyLength : {16u, 24u, 32u}) {
        const Bytes key = randomBytes(keyLength, 30 + keyLength);
        const Cipher fast = makeCipher(9, key);
        const FeatureLimit limit(0);
        const Cipher portable = makeCipher(9, key);
        EXPECT_TRUE(rijndaelUsesAesni(*fast));
        ASSERT_FALSE(rijndaelUsesAesni(*portable));
        for (std::size_t blocks = 0; blocks <= 40; ++blocks) {
            const Bytes in = randomBytes(16 * blocks, 31);
            EXPECT_EQ(ecb(*fast, true, in), ecb(*portable, true, in)) << blocks;
            EXPECT_EQ(ecb(*fast, false, in), ecb(*portable, false, in)) << blocks;
        }
    }
}

#if defined(__i386__)
// Calls a function of five words with a stack that lies `off` bytes below a multiple of 16.
void callMisaligned(std::uint32_t off, const void* function, const std::uint32_t (&arguments)[5])
{
    __asm__ __volatile__("movl %%esp, %%ebx\n\t"
                         "andl $-16, %%esp\n\t"
                         "subl %%esi, %%esp\n\t"
                         "pushl 16(%%edi)\n\tpushl 12(%%edi)\n\tpushl 8(%%edi)\n\tpushl 4(%%edi)\n\tpushl (%%edi)\n\t"
                         "call *%%eax\n\t"
                         "movl %%ebx, %%esp"
                         : "+a"(function)
                         : "S"(off), "D"(&arguments)
                         : "ebx", "ecx", "edx", "memory", "cc");
}

template <typename T>
std::uint32_t word(T* pointer)
{
    return reinterpret_cast<std::uint32_t>(pointer);
}

TEST(RijndaelTiers, VectorCodeSurvivesAnyStackOfFourByteAlignment)
{
    if (!cpu::has(cpu::AES | cpu::SSE2)) GTEST_SKIP() << "no AES instructions; in use: " << featuresHere();
    const Bytes keys = randomBytes(16 * 15, 32), in = randomBytes(16 * 13, 33);
    const auto* roundKeys = reinterpret_cast<const std::uint32_t*>(keys.data());
    for (const auto routine : {rijndaelEncryptAesni, rijndaelDecryptAesni}) {
        Bytes expected(in.size());
        routine(roundKeys, 14, in.data(), expected.data(), 13);
        for (std::uint32_t off = 0; off < 16; off += 4) {
            Bytes out(in.size());
            callMisaligned(off, reinterpret_cast<const void*>(routine),
                           {word(keys.data()), 14, word(in.data()), word(out.data()), 13});
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
