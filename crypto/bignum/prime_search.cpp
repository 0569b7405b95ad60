// The search for a prime on several threads. Workers take even numbers c, each two above the one before, from a shared
// cursor and test p = c + 1. The cursor, the outcome and the sink are under one lock; a worker's numbers are its own,
// allocated once.
#include "crypto/bignum/prime_search.h"

#include <atomic>
#include <numeric>

#include "crypto/base/threads.h"
#include "crypto/bignum/limbs_word.h"
#include "crypto/bignum/modular.h"
#include "crypto/bignum/operands.h"
#include "crypto/bignum/witness.h"

namespace toolbelt {
namespace detail {
namespace {

// Rounds of p and, for a safe prime, of (p - 1) / 2: one before those of p, the rest behind them.
constexpr std::uint32_t PRIME_ROUNDS = 25, FIRST_HALF_ROUNDS = 1, LAST_HALF_ROUNDS = 24;

// One worker's numbers, all of the cursor's size.
struct Candidate
{
    BigNum c; // even
    BigNum p; // c + 1
    BigNum half, halfMinusOne;
    std::uint32_t offset; // c is start + offset
    bool near;            // the offset holds

    Status allocate(std::size_t limbs) noexcept
    {
        for (BigNum* number : {&c, &p, &half, &halfMinusOne}) {
            const Status status = resizeLimbs(*number, limbs);
            if (status != STATUS_OK) return status;
        }
        return STATUS_OK;
    }
};

class Search
{
public:
    Search(bool safePrime, const BigNum* e, ProgressSink* sink) noexcept : safePrime_(safePrime), e_(e), sink_(sink) {}

    Status prepare(const BigNum& start) noexcept
    {
        if (!lock_) return BN_E_MEMORY;
        bits_ = bnBitLength(start);
        if (bits_ < 64) left_ = (std::uint64_t{1} << bits_) / 2;
        // Room for bit b, which the cursor reaches before it is cleared.
        const std::size_t limbs = bits_ / 64 + 1;
        Status status = resizeLimbs(cursor_, limbs);
        if (status == STATUS_OK) status = resizeLimbs(found_, limbs);
        if (status == STATUS_OK) status = bnCopy(cursor_, start);
        bnClearBit(cursor_, 0);
        return status == STATUS_OK ? residues_.build(cursor_) : status;
    }

    static void work(void* search)
    {
        threads::enterBackgroundMode();
        Search& self = *static_cast<Search*>(search);
        const Status status = self.run();
        if (status == STATUS_OK) return;
        const threads::LockScope scope(self.lock_);
        self.stop(status);
    }

    // After all workers have ended.
    Status outcome(BigNum& prime) const noexcept
    {
        if (status_ != STATUS_OK) return status_;
        return done_ ? bnCopy(prime, found_) : BN_E_RANGE;
    }

private:
    Status run()
    {
        Candidate candidate;
        Status status = candidate.allocate(static_cast<std::size_t>(cursor_.count));
        while (status == STATUS_OK && take(candidate)) status = examine(candidate);
        return status;
    }

    // The next number. False when the search is over, or all numbers of b bits have been given out.
    bool take(Candidate& next) noexcept
    {
        const threads::LockScope scope(lock_);
        if (done_ || left_ == 0) return false;
        --left_;
        const Limb two = 2;
        limbs::add(cursor_.limbs, cursor_.limbs, static_cast<std::size_t>(cursor_.count), &two, 1);
        near_ = near_ && offset_ < Residues::REACH - 4 && !bnTestBit(cursor_, bits_);
        offset_ += 2;
        bnClearBit(cursor_, bits_);    // begins anew at 0 instead of growing
        (void)bnCopy(next.c, cursor_); // has the room
        next.offset = offset_;
        next.near = near_;
        return true;
    }

    Status examine(Candidate& candidate)
    {
        if (safePrime_ && !bnTestBit(candidate.c, 1)) {
            candidate.c.limbs[0] |= 2;
            candidate.offset += 2;
        }
        bool coprime = true;
        Status status = checkExponent(coprime, candidate.c);
        if (status != STATUS_OK || !coprime) return status;

        (void)bnCopy(candidate.p, candidate.c);
        candidate.p.limbs[0] |= 1;
        bool prime = false;
        std::int32_t lastTest = 0;
        status = test(prime, lastTest, candidate);
        if (status != STATUS_OK) return status;

        if (sink_) {
            const threads::LockScope scope(lock_);
            if (status_ == STATUS_OK) stop(sink_->report(nullptr, 0, lastTest));
        }
        if (prime) {
            const threads::LockScope scope(lock_);
            done_ = true;
            (void)bnCopy(found_, candidate.p);
        }
        return STATUS_OK;
    }

    // Whether e and c have no common factor.
    Status checkExponent(bool& coprime, const BigNum& c) const noexcept
    {
        if (!e_) return STATUS_OK;
        const Operand e(*e_), value(c);
        if (e.count == 1 && e.data[0] >> 32 == 0) {
            const auto word = static_cast<std::uint32_t>(e.data[0]);
            coprime = std::gcd(limbs::remainderByWord(value.data, value.count, word), word) == 1;
            return STATUS_OK;
        }
        BigNum divisor;
        const Status status = bnGcd(divisor, c, *e_);
        coprime = bnCompareWord(divisor, 1) == 0;
        return status;
    }

    // bnProbablePrime on p alone, or on p and its half in turn, up to the first that fails. Trial division is done once
    // for each; the candidate's own numbers serve as predecessors.
    Status test(bool& prime, std::int32_t& lastTest, Candidate& x) const noexcept
    {
        lastTest = PRIME_DIVISIBLE;
        if (x.near ? residues_.divisible(x.offset + 1) : !bnTrialDivision(x.p)) return STATUS_OK;
        if (safePrime_) {
            const auto limbs = static_cast<std::size_t>(x.c.count);
            limbs::shiftRight(x.half.limbs, x.c.limbs, limbs, 1);
            // The half is odd, so it has the odd divisors of its double, and the table's first prime is not among them.
            if (x.near ? residues_.divisible(x.offset, 1) : !bnTrialDivision(x.half)) return STATUS_OK;
            (void)bnCopy(x.halfMinusOne, x.half);
            bnClearBit(x.halfMinusOne, 0);
            Status status = rounds(prime, lastTest, x.half, x.halfMinusOne, FIRST_HALF_ROUNDS);
            if (status != STATUS_OK || !prime) return status;
        }
        const Status status = rounds(prime, lastTest, x.p, x.c, PRIME_ROUNDS);
        if (status != STATUS_OK || !prime || !safePrime_) return status;
        return rounds(prime, lastTest, x.half, x.halfMinusOne, LAST_HALF_ROUNDS);
    }

    // One at a time: with long numbers a round takes long, and whoever stopped the search waits for it.
    Status rounds(bool& all, std::int32_t& lastTest, const BigNum& n, const BigNum& nMinusOne,
                  std::uint32_t count) const noexcept
    {
        std::uint32_t passed = 0, more = 1;
        Status status = STATUS_OK;
        while (status == STATUS_OK && passed < count && more == 1 && !stopped_ && bnCompareWord(n, 1) != 0) {
            status = fermatRounds(more, n, nMinusOne, 1);
            if (status == STATUS_OK) passed += more;
        }
        lastTest = static_cast<std::int32_t>(passed);
        all = passed == count;
        return status;
    }

    // Under the lock. The first status that is not 0 stays.
    void stop(Status status) noexcept
    {
        if (status == STATUS_OK) return;
        if (status_ == STATUS_OK) status_ = status;
        done_ = true;
        stopped_ = true;
    }

    const bool safePrime_;
    const BigNum* const e_;
    ProgressSink* const sink_;
    std::uint32_t bits_ = 0;
    Residues residues_;                // of the start
    std::atomic<bool> stopped_{false}; // by a status: read without the lock between rounds

    threads::Lock lock_; // over all that follows
    BigNum cursor_, found_;
    std::uint32_t offset_ = 0;
    bool near_ = true;
    std::uint64_t left_ = UINT64_MAX; // numbers that were not given out yet
    bool done_ = false;
    Status status_ = STATUS_OK;
};

// The table for as long as the search runs, unless there is one.
class SearchTable
{
public:
    SearchTable() noexcept = default;
    SearchTable(const SearchTable&) = delete;
    SearchTable& operator=(const SearchTable&) = delete;
    ~SearchTable()
    {
        if (built_) bnFreePrimeTable();
    }
    Status ensure(std::uint32_t count)
    {
        if (bnPrimeTable(nullptr)) return STATUS_OK;
        const Status status = bnBuildPrimeTable(count);
        built_ = status == STATUS_OK;
        return status;
    }

private:
    bool built_ = false;
};

std::atomic_flag searching = ATOMIC_FLAG_INIT;

struct Turn
{
    const bool mine = !searching.test_and_set();
    ~Turn()
    {
        if (mine) searching.clear();
    }
};

} // namespace

std::uint32_t fixedWorkers = 0;

Status searchPrime(BigNum& prime, const BigNum& start, bool safePrime, const BigNum* e, ProgressSink* sink,
                   std::uint32_t workers)
{
    const Turn turn;
    if (!turn.mine || tooLong(start)) return BN_E_RANGE;
    if (e && (tooLong(*e) || !bnTestBit(*e, 0))) return BN_E_RANGE; // p - 1 is even: an even e never fits
    SearchTable table;
    Status status = table.ensure(bnBitLength(start));
    if (status != STATUS_OK) return status;
    Search search(safePrime, e, sink);
    status = search.prepare(start);
    if (status != STATUS_OK) return status;
    if (threads::runAndWait(workers, Search::work, &search) == 0) return BN_E_MEMORY;
    return search.outcome(prime);
}

} // namespace detail

Status bnSearchPrime(BigNum& prime, const BigNum& start, bool safePrime, const BigNum* e, ProgressSink* sink)
{
    const std::uint32_t processors = threads::processorCount();
    const std::uint32_t usual = processors > 1 ? processors - 1 : 1;
    return detail::searchPrime(prime, start, safePrime, e, sink, detail::fixedWorkers ? detail::fixedWorkers : usual);
}

} // namespace toolbelt
