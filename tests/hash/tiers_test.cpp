// The routines of each digest against each other: which one a processor gets, the same digests from all.
#include <random>

#include "crypto/hash/keccak512.h"
#include "crypto/hash/sha1.h"
#include "crypto/hash/sha256.h"
#include "crypto/hash/sha512.h"
#include "crypto/hash/skein512.h"
#include "crypto/hash/whirlpool.h"
#include "tests/hash/hash_support.h"
#include "tests/support/tiers.h"

namespace toolbelt {
namespace {

using test::Bytes;
using test::FeatureLimit;

TEST(HashTiers, AreChosenByWhatTheyNeed)
{
    const auto chosen = [](std::uint32_t features) {
        const FeatureLimit limit(features);
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

TEST(HashTiers, GiveTheSameWhateverTheSplitAndTheAlignment)
{
    std::mt19937 random(7);
    Bytes message(5000);
    for (std::uint8_t& byte : message) byte = static_cast<std::uint8_t>(random());
    for (const HashRow& row : hashRows)
        for (const std::uint32_t features : test::featureSteps()) {
            const test::Hash portable = [&] {
                const FeatureLimit limit(0);
                return test::makeHash(row.id);
            }();
            const FeatureLimit limit(features);
            const test::Hash hash = test::makeHash(row.id);
            for (int round = 0; round < 60; ++round) {
                ASSERT_EQ(portable->reset(), 0);
                ASSERT_EQ(hash->reset(), 0);
                for (std::size_t at = random() % 16; at < message.size();) {
                    const std::size_t size = std::min<std::size_t>(random() % 1500, message.size() - at);
                    ASSERT_EQ(portable->update(&message[at], static_cast<std::uint32_t>(size)), 0);
                    test::updateExactly(*hash, &message[at], size);
                    at += size + random() % 1500;
                }
                ASSERT_EQ(test::finish(*hash), test::finish(*portable)) << row.name << " with " << features;
            }
        }
}

} // namespace
} // namespace toolbelt
