// The table of small primes and the probable-prime test.
#include <set>

#include "crypto/base/runtime_rand.h"
#include "crypto/bignum/primes.h"
#include "tests/bignum/numbers.h"
#include "tests/support/recording_sink.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {
namespace {

TEST(PrimeTable, HoldsAndReportsWhatTheFixedWitnessesLeave)
{
    std::size_t seen = 0;
    for (const Record& record : readVectors("primes.txt")) {
        if (record.kind() != "table") continue;
        SCOPED_TRACE(record.where);
        ++seen;
        const std::vector<std::int32_t> expected = integers(record.get("entries"));
        std::vector<std::int32_t> counts;
        for (std::size_t i = 2; i <= expected.size(); ++i) counts.push_back(static_cast<std::int32_t>(i));
        std::set<int> next;
        forEachTier([&] {
            bnFreePrimeTable();
            RecordingSink sink;
            runtimeSrand(1);
            ASSERT_EQ(bnBuildPrimeTable(record.number("table"), &sink), STATUS_OK);
            EXPECT_EQ(table(), expected);
            EXPECT_EQ(sink.steps, counts);
            next.insert(runtimeRand());
        });
        EXPECT_EQ(next.size(), 1u) << "a tier drew other witnesses";
        EXPECT_EQ(bnBuildPrimeTable(1), BN_E_RANGE);
        EXPECT_EQ(table(), expected) << "a refused build must leave the table alone";
        for (int twice = 0; twice < 2; ++twice) EXPECT_EQ(bnFreePrimeTable(), STATUS_OK);
    }
    EXPECT_EQ(seen, 3u);
}

TEST(PrimeTable, IsAbsentUntilCompleteAndAfterEveryFailure)
{
    EXPECT_EQ(bnBuildPrimeTable(0xFFFFFFFF), BN_E_MEMORY);
    EXPECT_EQ(bnBuildPrimeTable(0x40000001), BN_E_MEMORY) << "four times that is 4 in 32 bits";

    TestHeap heap;
    for (const std::size_t last : {1u, 5u, 15u}) {
        RecordingSink sink;
        sink.stopAt = last;
        sink.atEach = [] {
            EXPECT_EQ(bnPrimeTable(nullptr), nullptr);
            EXPECT_EQ(bnProbablePrime(Number("03"), 1), 1) << "half a table divides nothing";
            EXPECT_EQ(bnBuildPrimeTable(1), BN_E_RANGE);
            EXPECT_EQ(bnFreePrimeTable(), STATUS_OK);
        };
        EXPECT_EQ(bnBuildPrimeTable(4, &sink), RecordingSink::STOP);
        EXPECT_TRUE(sink.reports() == last && table().empty());
    }
}

TEST(ProbablePrime, TellsWhyANumberIsComposite)
{
    constexpr std::int32_t untouched = 77;
    const struct
    {
        const char* n;
        std::uint32_t rounds;
        int result;
        std::int32_t status, statusWithTable;
    } cases[] = {
        // Without a table there is one of no entries: a table of 16 divides its own primes.
        {"00", 0, 1, untouched, PRIME_DIVISIBLE},
        {"01", 3, 0, 0, 0},
        {"02", 3, 0, PRIME_EVEN, PRIME_DIVISIBLE},
        {"0b0000000000000000", 3, 0, PRIME_EVEN, PRIME_DIVISIBLE},
        {"ffffffffffffffc5", 25, 1, 25, 25},
        {"07fffffffffffffffffffffffffffffff3", 1, 0, 0, PRIME_DIVISIBLE},
        {"7fffffffffffffffffffffffffffffff", 2, 1, 2, 2},
        {"01000000000000003200000000000001e1", 2, 0, 0, 0}, // the first two primes above 2^64
    };
    for (const bool withTable : {false, true}) {
        ASSERT_EQ(bnBuildPrimeTable(withTable ? 4 : 0), STATUS_OK);
        for (const auto& one : cases) {
            const Number n(one.n);
            const std::int32_t expected = withTable ? one.statusWithTable : one.status;
            const bool divisible = expected == PRIME_DIVISIBLE;
            std::int32_t status = untouched;
            EXPECT_EQ(bnProbablePrime(n, one.rounds, &status), divisible ? 0 : one.result) << one.n;
            EXPECT_EQ(status, expected) << one.n;
            EXPECT_EQ(bnTrialDivision(n), !divisible) << one.n;
        }
        bnFreePrimeTable();
    }
    EXPECT_EQ(bnFermatRound(Number("01"), Number("00")), 0) << "no witness exists, and none may be waited for";
    EXPECT_EQ(bnFermatRound(Number("0d"), Number("0c")), 1);
}

} // namespace
} // namespace toolbelt::test
