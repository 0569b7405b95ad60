// RSA key generation: the reports, the keys made, and every way it may end early.
#include <gtest/gtest.h>

#include "crypto/bignum/modular.h"
#include "crypto/pka/rsa_generate.h"
#include "tests/pka/rsa_test_keys.h"
#include "tests/support/one_worker.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {
namespace {

// Remembers the phases, counts the steps in each, and stops at the report it is told.
class Listener : public ProgressSink
{
public:
    explicit Listener(std::uint32_t stopAt = 0) : stopAt_(stopAt) {}
    Status report(const char* message, std::uint32_t zero, std::int32_t value) override
    {
        EXPECT_EQ(zero, 0u);
        if (message) {
            phases.push_back(message + std::to_string(value));
            steps.push_back({});
        } else if (steps.empty())
            ADD_FAILURE() << "a step before any phase";
        else
            steps.back().push_back(value);
        return ++reports == stopAt_ ? 1234 : STATUS_OK;
    }
    std::vector<std::string> phases;
    std::vector<std::vector<std::int32_t>> steps;
    std::uint32_t reports = 0;

private:
    std::uint32_t stopAt_;
};

Bytes seedOf(std::uint32_t length, std::uint8_t fill = 0xC5)
{
    Bytes seed(length);
    for (std::uint32_t i = 0; i < length; ++i) seed[i] = static_cast<std::uint8_t>(fill + 151 * i * i);
    seed[0] |= 0xC0;
    seed[length / 2] |= 0xC0;
    return seed;
}

bool isPrime(const BigNum& n)
{
    return bnProbablePrime(n, 20) == 1;
}

void expectGoodKey(const RsaPrivateKey& key, std::uint32_t bits, std::uint64_t e, bool safe)
{
    EXPECT_EQ(key.bits, bits);
    EXPECT_EQ(bnBitLength(*key.n), bits);
    EXPECT_EQ(bnCompareWord(*key.e, e), 0);
    EXPECT_GT(bnCompare(*key.p, *key.q), 0);
    BigNum x, phi, half;
    ASSERT_EQ(bnMultiply(x, *key.p, *key.q), STATUS_OK);
    EXPECT_EQ(bnCompare(x, *key.n), 0);
    for (const BigNum* prime : {key.p, key.q}) {
        EXPECT_TRUE(isPrime(*prime));
        ASSERT_EQ(bnShiftRight(half, *prime, 1), STATUS_OK);
        EXPECT_TRUE(!safe || isPrime(half));
        ASSERT_EQ(bnSubtractWord(phi, *prime, 1), STATUS_OK);
        ASSERT_EQ(bnModMultiply(x, *key.d, *key.e, phi), STATUS_OK);
        EXPECT_EQ(bnCompareWord(x, 1), 0) << "d is no inverse of e modulo p - 1 or q - 1";
    }
    EXPECT_TRUE(rsaSelfTest(key));
}

using RsaGenerate = OneWorker;

TEST_F(RsaGenerate, MakesKeysOfTheLengthAndReportsItsPhases)
{
    struct Case
    {
        std::uint32_t length, e;
        bool safe;
    };
    for (const Case& c : {Case{64, 0, false}, Case{65, 3, false}, Case{129, 17, false}, Case{40, 0, true}}) {
        SCOPED_TRACE(c.length);
        Bytes seed = seedOf(c.length);
        Listener sink;
        RsaPrivateKey* made = nullptr;
        ASSERT_EQ(generateRsa(&made, seed.data(), c.length, c.e, &sink, c.safe), STATUS_OK);
        const RsaPrivateOwner key(made);
        expectGoodKey(*key, 8 * c.length, c.e == 0 ? 65537 : c.e, c.safe);
        const std::uint32_t p = 8 * (c.length / 2), q = 8 * c.length - p;
        const std::vector<std::string> phases{"Generates prime table\n" + std::to_string(8 * c.length),
                                              "Finds prime P\n" + std::to_string(p),
                                              "Finds prime Q\n" + std::to_string(q)};
        EXPECT_EQ(sink.phases, phases);
        ASSERT_EQ(sink.steps[0].size(), 32 * c.length - 1);
        for (std::size_t i = 0; i < sink.steps[0].size(); ++i) ASSERT_EQ(sink.steps[0][i], std::int32_t(i + 2));
        for (std::size_t phase : {1u, 2u}) EXPECT_EQ(sink.steps[phase].back(), c.safe ? 24 : 25);
        EXPECT_EQ(bnPrimeTable(nullptr), nullptr);
    }
}

// Both halves start at one number, so the second search ends where the first did and goes on from there.
TEST_F(RsaGenerate, LooksForAnotherPrimeWhenTheTwoAreEqual)
{
    Bytes seed = seedOf(32);
    std::copy_n(seed.begin(), 16, seed.begin() + 16);
    Listener sink;
    RsaPrivateKey* made = nullptr;
    ASSERT_EQ(generateRsa(&made, seed.data(), 32, 0, &sink, false), STATUS_OK);
    const RsaPrivateOwner key(made);
    expectGoodKey(*key, 256, 65537, false);
    ASSERT_EQ(sink.phases.size(), 4u);
    EXPECT_EQ(sink.phases[3], "Finds prime Q\n128");
}

TEST_F(RsaGenerate, RefusesWhatCannotBecomeAKeyAndUsesATableThatIsThere)
{
    Bytes seed = seedOf(32);
    auto* const untouched = reinterpret_cast<RsaPrivateKey*>(std::uintptr_t(64));
    RsaPrivateKey* made = untouched;
    EXPECT_EQ(generateRsa(&made, seed.data(), 15, 0, nullptr, false), PKA_E_LENGTH);
    EXPECT_EQ(generateRsa(&made, seed.data(), PKA_MAX_KEY_BITS / 8 + 1, 0, nullptr, false), PKA_E_LENGTH);
    EXPECT_EQ(generateRsa(&made, seed.data(), 32, 1, nullptr, false), PKA_E_KEY);
    EXPECT_EQ(generateRsa(&made, seed.data(), 32, 65536, nullptr, false), PKA_E_KEY);
    Bytes last(32, 0xFF); // the search wraps around, to a prime that is too short
    EXPECT_EQ(generateRsa(&made, last.data(), 32, 0, nullptr, false), PKA_E_KEY);
    EXPECT_EQ(made, untouched);

    ASSERT_EQ(bnBuildPrimeTable(64), STATUS_OK);
    Listener sink;
    ASSERT_EQ(generateRsa(&made, seed.data(), 32, 0, &sink, false), STATUS_OK);
    const RsaPrivateOwner key(made);
    ASSERT_EQ(sink.phases.size(), 2u);
    EXPECT_EQ(sink.phases[0], "Finds prime P\n128");
    EXPECT_NE(bnPrimeTable(nullptr), nullptr) << "the table was not the generator's to free";
    bnFreePrimeTable();

    ASSERT_EQ(bnAddWord(*key->d, *key->d, 2), STATUS_OK);
    EXPECT_TRUE(rsaSelfTest(*key)) << "d itself takes no part";
    ASSERT_EQ(bnAddWord(*key->dq, *key->dq, 2), STATUS_OK);
    EXPECT_FALSE(rsaSelfTest(*key));
}

TEST_F(RsaGenerate, StopsAtAnyReportAndLeavesNothing)
{
    Listener whole;
    Bytes seed = seedOf(32);
    RsaPrivateKey* made = nullptr;
    ASSERT_EQ(generateRsa(&made, seed.data(), 32, 0, &whole, false), STATUS_OK);
    freeRsaKey(made);
    const auto inTable = static_cast<std::uint32_t>(whole.steps[0].size());
    const std::uint32_t beforeQ = 2 + inTable + static_cast<std::uint32_t>(whole.steps[1].size());
    for (const std::uint32_t at : {1u, 2u, inTable, inTable + 2, inTable + 3, beforeQ, beforeQ + 1, beforeQ + 2}) {
        const TestHeap heap;
        Listener sink(at);
        Bytes again = seedOf(32);
        made = nullptr;
        EXPECT_EQ(generateRsa(&made, again.data(), 32, 0, &sink, false), 1234) << at;
        EXPECT_EQ(made, nullptr);
        EXPECT_EQ(sink.reports, at) << "called again after it said stop";
        EXPECT_EQ(bnPrimeTable(nullptr), nullptr);
    }
}

TEST_F(RsaGenerate, EndsClearlyWhenMemoryRunsOut)
{
    std::uint32_t ended = 0;
    for (const bool onwards : {false, true})
        for (std::uint32_t n = 1; n < 2000; n = n < 150 ? n + 1 : n * 5 / 4) {
            TestHeap heap;
            heap.failAt(n, onwards);
            Bytes seed = seedOf(16);
            RsaPrivateKey* made = nullptr;
            const Status status = generateRsa(&made, seed.data(), 16, 0, nullptr, false);
            const RsaPrivateOwner key(made);
            EXPECT_EQ(key == nullptr, status != STATUS_OK);
            EXPECT_EQ(heap.failed(), status != STATUS_OK);
            EXPECT_TRUE(status == PKA_E_MEMORY || status == STATUS_OK || status == PKA_E_KEY) << n << ": " << status;
            EXPECT_EQ(bnPrimeTable(nullptr), nullptr);
            ended += status != STATUS_OK;
        }
    EXPECT_GT(ended, 100u);
}

} // namespace
} // namespace toolbelt::test
