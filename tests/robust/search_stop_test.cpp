// Prime searches that are stopped at random moments: no hang, nothing left over, and never half a result.
#include <chrono>
#include <random>

#include "crypto/bignum/prime_search.h"
#include "tests/bignum/numbers.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {
namespace {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::microseconds;

// Says stop from a moment on.
struct StopAt final : ProgressSink
{
    static constexpr Status STOP = 4711;
    Clock::time_point moment;
    Status report(const char*, std::uint32_t, std::int32_t) override { return Clock::now() < moment ? 0 : STOP; }
};

TEST(PrimeSearch, StopsAtAnyMoment)
{
#if defined(_WIN32)
    constexpr int SEARCHES = 100;
#else
    constexpr int SEARCHES = 1000;
#endif
    std::mt19937 random(20);
    const TestHeap heap;
    ASSERT_EQ(bnBuildPrimeTable(64), STATUS_OK); // one table for all: building it takes longer than a search
    int stopped = 0;
    for (int i = 0; i < SEARCHES; ++i) {
        Dice dice(static_cast<std::uint32_t>(i));
        Number start = dice.number(1), prime;
        start.limbs[0] = start.limbs[0] >> 2 | std::uint64_t{1} << 63; // far from wrapping
        const std::uint32_t held = heap.held();
        StopAt sink;
        sink.moment = Clock::now() + Microseconds(random() % (i % 2 ? 1500 : 20000));
        const Status status = detail::searchPrime(prime, start, i % 8 == 0, nullptr, &sink, 1 + i % 3);
        if (status == STATUS_OK) {
            EXPECT_EQ(bnProbablePrime(prime, 3), 1);
            EXPECT_GT(bnCompare(prime, start), 0);
            bnDestroy(prime);
        } else {
            ++stopped;
            EXPECT_EQ(status, StopAt::STOP);
            EXPECT_EQ(prime.count, 0) << "written though it was stopped";
        }
        ASSERT_EQ(heap.held(), held);
    }
    bnFreePrimeTable();
    std::printf("%d searches, %d of them stopped\n", SEARCHES, stopped);
    EXPECT_GT(stopped, SEARCHES / 10);
    EXPECT_LT(stopped, SEARCHES);
}

} // namespace
} // namespace toolbelt::test
