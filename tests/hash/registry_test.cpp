// The registry, the framework's calls, the life of digest objects, and which routine of each digest a processor gets.
#include "crypto/hash/hash.h"

#include <gtest/gtest.h>

#include <vector>

#include "crypto/hash/keccak512.h"
#include "crypto/hash/md5.h"
#include "crypto/hash/sha1.h"
#include "crypto/hash/sha256.h"
#include "crypto/hash/sha512.h"
#include "crypto/hash/skein512.h"
#include "crypto/hash/whirlpool.h"
#include "tests/hash/hash_support.h"
#include "tests/support/test_heap.h"
#include "tests/support/tiers.h"

namespace toolbelt {
namespace {

static_assert(sizeof(cHashMD5) == 2 * sizeof(void*), "an object holds its context pointer and nothing else");

TEST(HashRegistry, RowsAndOfferedIdsAreTheDocumentedOnesInOrder)
{
    struct Expected
    {
        std::int32_t id;
        std::uint32_t size;
        const char* name;
        std::uint32_t wiped; // blocks that are wiped when the object goes: the contexts of all but the three oldest
    };
    constexpr Expected rows[] = {{1, 16, "MD5", 0},          {2, 20, "SHA-1", 0},        {3, 20, "RIPEMD-160", 0},
                                 {0x80, 32, "SHA-256", 1},   {8, 32, "SHA-256", 1},      {10, 64, "SHA-512", 1},
                                 {0x81, 64, "Whirlpool", 1}, {0x83, 64, "Skein-512", 1}, {0x82, 64, "Keccak-512", 1}};
    static_assert(std::size(rows) == HASH_ROW_COUNT);
    for (std::uint32_t i = 0; i < HASH_ROW_COUNT; ++i) {
        SCOPED_TRACE(rows[i].id);
        EXPECT_EQ(hashRows[i].id, rows[i].id);
        EXPECT_EQ(hashRows[i].size, rows[i].size);
        EXPECT_STREQ(hashRows[i].name, rows[i].name);

        test::TestHeap heap; // its destructor notices contexts that leak or that are not zero all over
        cHashAlg* hash = nullptr;
        ASSERT_EQ(createHash(&hash, rows[i].id), 0);
        ASSERT_NE(hash, nullptr);
        EXPECT_EQ(hashSize(hash), rows[i].size);
        EXPECT_EQ(heap.held(), 2u);
        EXPECT_EQ(hash->update(reinterpret_cast<const std::uint8_t*>("secret"), 6), 0);
        destroyHash(hash);
        EXPECT_EQ(heap.secretsReleased(), rows[i].wiped);
    }
    EXPECT_EQ(hashRows[3].create, hashRows[4].create);
    EXPECT_EQ(std::vector<std::int32_t>(offeredHashes, offeredHashes + OFFERED_HASH_COUNT),
              (std::vector<std::int32_t>{1, 2, 3, 0x80, 10, 0x81, 0x82, 0x83}));
}

TEST(HashRegistry, UnknownIdsLeaveTheSlotAlone)
{
    cHashAlg* const mark = reinterpret_cast<cHashAlg*>(std::uintptr_t(0x1234));
    for (const std::int32_t id : {0, 4, 9, 11, 0x7F, 0x84, 0x101, -0x7F, -1}) {
        cHashAlg* hash = mark;
        EXPECT_EQ(createHash(&hash, id), 22) << id;
        EXPECT_EQ(hash, mark) << id;
    }
    destroyHash(nullptr);
}

TEST(HashFramework, HashBufferStopsAtTheFirstFailure)
{
    struct Failing final : cHashAlg
    {
        Status statuses[3] = {};
        std::uint32_t calls = 0;
        Status update(const std::uint8_t*, std::uint32_t) override { return ++calls, statuses[1]; }
        Status final(std::uint8_t*) override { return ++calls, statuses[2]; }
        Status reset() override { return ++calls, statuses[0]; }
    };
    for (std::uint32_t failing = 0; failing < 3; ++failing) {
        Failing hash;
        hash.statuses[failing] = 77;
        EXPECT_EQ(hashBuffer(&hash, nullptr, nullptr, 0), 77);
        EXPECT_EQ(hash.calls, failing + 1);
        // What a class does not override.
        EXPECT_EQ(hash.getSize(), 23u);
        EXPECT_EQ(hash.cHashAlg::update(nullptr, 0) + hash.cHashAlg::final(nullptr) + hash.cHashAlg::reset(), 3 * 23);
    }
}

TEST(HashFramework, ContextRoutinesRefuseAMissingContext)
{
    std::uint8_t bytes[64] = {};
    EXPECT_EQ(keccak512Reset(nullptr) + keccak512Update(nullptr, bytes, 1) + keccak512Final(nullptr, bytes), 3);
    EXPECT_EQ(whirlpoolReset(nullptr) + whirlpoolUpdate(nullptr, bytes, 1) + whirlpoolFinal(nullptr, bytes), 3);
    EXPECT_EQ(skein512Reset(nullptr) + skein512Update(nullptr, bytes, 1) + skein512Final(nullptr, bytes), 3);
}

TEST(HashTiers, AreChosenByWhatTheyNeed)
{
    const auto chosen = [](std::uint32_t features) {
        const test::FeatureLimit limit(features);
        Sha1Context sha1;
        Sha256Context sha256;
        Sha512Context sha512;
        Skein512Context skein;
        WhirlpoolContext whirlpool;
        Keccak512Context keccak;
        sha1Choose(&sha1), sha256Choose(&sha256), sha512Choose(&sha512);
        skein512Choose(&skein), whirlpoolChoose(&whirlpool), keccak512Choose(&keccak);
        return std::make_tuple(sha1.compress, sha256.compress, sha512.compress, skein.compress, whirlpool.compress,
                               keccak.absorb);
    };
    // The SHA instructions do not come without SSSE3; not every processor with AVX2 has them.
    const bool sha = cpu::has(cpu::SHA);
    const std::uint32_t withSha = sha ? cpu::SHA : 0;
    const std::uint32_t NO_SSSE3 = cpu::SSE2 | withSha, AVX2 = NO_SSSE3 | cpu::SSSE3 | cpu::AVX2;
    const auto sha1 = sha ? sha1CompressShani : sha1Compress;
    const auto sha256 = sha ? sha256CompressShani : sha256Compress;
    const std::pair<std::uint32_t, decltype(chosen(0))> expected[] = {
        {0, {sha1Compress, sha256Compress, sha512Compress, skein512Compress, whirlpoolCompress, keccak512Absorb}},
        {NO_SSSE3,
         {sha1Compress, sha256Compress, sha512Compress, skein512Compress, whirlpoolCompressSse2, keccak512AbsorbSse2}},
        {AVX2, {sha1, sha256, sha512CompressAvx2, skein512CompressAvx2, whirlpoolCompressAvx2, keccak512AbsorbSse2}},
        {AVX2 | cpu::AVX512,
         {sha1, sha256, sha512CompressAvx512, skein512CompressAvx512, whirlpoolCompressAvx2, keccak512AbsorbAvx512}},
    };
    for (const auto& [features, routines] : expected) {
        if (!cpu::has(features)) continue; // a routine that does not run here is not chosen either
        EXPECT_EQ(chosen(features), routines) << features;
    }
}

} // namespace
} // namespace toolbelt
