// The search for primes: its whole sequence of reports on one thread, stops and failures, and several threads.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

#include "crypto/base/runtime_rand.h"
#include "crypto/bignum/modular.h"
#include "crypto/bignum/prime_search.h"
#include "tests/bignum/numbers.h"
#include "tests/support/recording_sink.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {
namespace {

// Every report of every search, in order, and then a stop at the first, a middle and the last of them.
TEST(PrimeSearch, ReportsEveryTestedCandidateAndStopsAtAnyReport)
{
    std::uint32_t searches = 0;
    for (const Record& record : readVectors("primes.txt")) {
        if (record.kind() != "search") continue;
        SCOPED_TRACE(record.where);
        ++searches;
        const Number start(record.get("search")), e(record.get("e"));
        const bool safe = record.number("safe") == 1, hasE = record.get("e") != "00";
        const std::vector<std::int32_t> reports = integers(record.get("reports"));
        TestHeap heap;
        runtimeSrand(1);
        const std::uint32_t count = record.number("table"); // of the one that is there already
        ASSERT_EQ(count ? bnBuildPrimeTable(count) : STATUS_OK, STATUS_OK);
        const std::uint32_t held = heap.held();
        for (const std::size_t stop : {std::size_t(0), std::size_t(1), reports.size() / 2, reports.size()}) {
            runtimeSrand(1); // of the table, when the search builds it
            RecordingSink sink;
            sink.stopAt = stop;
            BigNum result;
            EXPECT_EQ(detail::searchPrime(result, start, safe, hasE ? &e : nullptr, &sink, 1),
                      stop ? RecordingSink::STOP : STATUS_OK);
            EXPECT_EQ(hex(result), stop ? "00" : record.get("prime"));
            std::vector<std::int32_t> expected = reports;
            if (stop) expected.resize(stop);
            EXPECT_EQ(sink.steps, expected);
            EXPECT_EQ(sink.phases.size(), 0u);
            EXPECT_EQ(table().size(), 4 * count) << "a table that was there stays, one that was built goes";
        }
        EXPECT_EQ(heap.held(), held);
        EXPECT_EQ(record.unread(), std::vector<std::string>());
        bnFreePrimeTable();
    }
    EXPECT_EQ(searches, 10u);
}

TEST(PrimeSearch, RefusesWhatCannotSucceed)
{
    // p - 1 shares a factor with every even number; no number has so few bits; all primes of five bits are in the
    // table, so that the search comes to its end; no thread could be started.
    BigNum result;
    const auto refusal = [&](const char* from, const char* e, std::uint32_t workers) {
        const Number exponent(e);
        return detail::searchPrime(result, Number(from), false, &exponent, nullptr, workers);
    };
    EXPECT_EQ(refusal("c0000001", "06", 1), BN_E_RANGE);
    EXPECT_EQ(refusal("01", "03", 1), BN_E_RANGE);
    EXPECT_EQ(refusal("10", "01", 3), BN_E_RANGE);
    EXPECT_EQ(refusal("c0000001", "03", 0), BN_E_MEMORY);
    EXPECT_TRUE(result.count == 0 && table().empty());
    const Number start("9e3779b97f4a7c15f39cc0605cedc87a");
    RecordingSink sink;
    sink.atEach = [&] {
        BigNum other;
        EXPECT_EQ(bnSearchPrime(other, start, false, nullptr, nullptr), BN_E_RANGE);
        EXPECT_EQ(bnBuildPrimeTable(4), BN_E_RANGE);
        EXPECT_EQ(table().size(), 4u * 128);
    };
    Number number("9e3779b97f4a7c15f39cc0605cedc87a"); // the result may be the start
    EXPECT_EQ(detail::searchPrime(number, number, false, nullptr, &sink, 1), STATUS_OK);
    EXPECT_EQ(hex(number), "9e3779b97f4a7c15f39cc0605cedc883");
    EXPECT_GE(sink.reports(), 4u);
}

// Several threads on one cursor, half of the searches stopped at some moment: the sink never hears two at once, what is
// found stands every check, and a search that was stopped leaves nothing over and never half a result.
TEST(PrimeSearch, SharesItsCursorAmongWorkersAndStopsAtAnyMoment)
{
#if defined(_WIN32)
    constexpr std::uint32_t SEARCHES = 120;
#else
    constexpr std::uint32_t SEARCHES = 1000;
#endif
    using Clock = std::chrono::steady_clock;
    const Number e("03");
    const TestHeap heap;
    ASSERT_EQ(bnBuildPrimeTable(64), STATUS_OK); // one table for all: building it takes longer than a search
    std::uint32_t stopped = 0;
    for (std::uint32_t i = 0; i < SEARCHES; ++i) {
        Dice dice(i);
        const bool safe = i % 8 == 3;
        Number start = dice.number(safe || i % 16 != 0 ? 1 : 3), prime;
        start.limbs[start.count - 1] = start.limbs[start.count - 1] >> 2 | std::uint64_t{1} << 63; // far from wrapping
        const std::uint32_t held = heap.held();
        std::atomic<int> inside = 0;
        RecordingSink sink;
        const auto moment = Clock::now() + std::chrono::microseconds(dice.below(i % 2 ? 1500 : 20000));
        sink.atEach = [&] {
            EXPECT_EQ(inside++, 0);
            std::this_thread::yield();
            --inside;
            if (Clock::now() >= moment) sink.stopAt = sink.reports();
        };
        const Status status = detail::searchPrime(prime, start, safe, &e, &sink, 1 + i % 3);
        if (status == STATUS_OK) {
            EXPECT_GT(bnCompare(prime, start), 0);
            EXPECT_EQ(bnProbablePrime(prime, 5), 1);
            EXPECT_EQ(hex(run(bnGcd, run(bnSubtractWord, prime, std::uint64_t{1}), e)), "01");
            EXPECT_NE(std::find(sink.steps.begin(), sink.steps.end(), safe ? 24 : 25), sink.steps.end());
            bnDestroy(prime);
        } else {
            ++stopped;
            EXPECT_EQ(status, RecordingSink::STOP);
            EXPECT_EQ(prime.count, 0) << "written though it was stopped";
        }
        ASSERT_EQ(heap.held(), held);
    }
    bnFreePrimeTable();
    std::printf("%u searches, %u of them stopped\n", SEARCHES, stopped);
    EXPECT_GT(stopped, SEARCHES / 10);
    EXPECT_LT(stopped, SEARCHES);
}

// Offsets that are sieved, those around the end of the sieve, and far ones.
TEST(PrimeSearch, DividesTheNumbersBehindItsStart)
{
    Dice dice(31);
    ASSERT_EQ(bnBuildPrimeTable(64), STATUS_OK);
    for (int round = 0; round < 4; ++round) {
        Number base = dice.number(2);
        base.limbs[0] = round < 2 ? base.limbs[0] & ~std::uint64_t{1} : base.limbs[0];
        detail::Residues residues;
        ASSERT_EQ(residues.build(base), STATUS_OK);
        for (std::uint32_t i = 0; i < 300; ++i) {
            const std::uint32_t offset = i < 100 ? i : i < 200 ? 8092 + i : dice.below(detail::Residues::REACH);
            const Number n = run(bnAddWord, base, offset);
            ASSERT_EQ(residues.divisible(offset), bnTrialDivision(n) == 0) << hex(n);
            ASSERT_TRUE(!bnTestBit(n, 0) || residues.divisible(offset, 1) == residues.divisible(offset)) << hex(n);
        }
    }
    bnFreePrimeTable();
}

} // namespace
} // namespace toolbelt::test
