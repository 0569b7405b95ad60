// Primes: the process-wide table of small primes, the Fermat probable-prime test, and the search on several threads.
//
// The table is not guarded: it is built before workers start and freed after they have ended, and one search or table
// build runs at a time in a process. Witnesses come from the runtime's rand() of the calling thread: one round lets a
// few composite numbers into the table, and a Carmichael number without small factors passes every round.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/bignum/bignum.h"

namespace toolbelt {

// ProgressSink: hears of the progress of long work and may stop it. The caller owns it; it has no virtual destructor.
class ProgressSink
{
public:
    virtual void reserved0() {}
    virtual void reserved1() {}
    virtual void reserved2() {}
    virtual void reserved3() {}
    // message is a phase's text, or null for a step inside a phase; zero is always 0. A reply other than 0 stops the
    // work, which then returns it unchanged; it must not throw. Called by one thread at a time, not always the one that
    // asked for the work.
    virtual Status report(const char* message, std::uint32_t zero, std::int32_t value) = 0;

protected:
    ~ProgressSink() = default;
};

// ---- the table of small primes: 2 and the odd numbers after it that pass one Fermat round

// Fills the table with 4 * count entries, telling the sink (may be null) the number of entries after each odd one.
// BN_E_RANGE when a table exists or is being built; BN_E_MEMORY; or the sink's reply. On failure there is no table.
[[nodiscard]] TB_API Status bnBuildPrimeTable(std::uint32_t count, ProgressSink* sink = nullptr);
// Always STATUS_OK. Not from a sink that is told of a search: its workers read the table.
TB_API Status bnFreePrimeTable();
// The entries, smallest first; null and 0 while there is no table.
const std::uint32_t* bnPrimeTable(std::uint32_t* count);
// 1 when no entry of the table divides n, else 0; an entry divides itself, and every entry divides 0.
TB_API int bnTrialDivision(const BigNum& n);

// ---- probable primes

// 1 when a random witness a gives a^(n - 1) mod n = 1; 0 also when memory runs out. nMinusOne is n - 1; for n below 2,
// which has no witness, 0.
TB_API int bnFermatRound(const BigNum& n, const BigNum& nMinusOne);
// 1 for a probable prime: trial division when there is a table, then Fermat rounds until one fails. *status receives
// the rounds passed, PRIME_DIVISIBLE, PRIME_EVEN or PRIME_NO_PREDECESSOR; it is left alone when 0 rounds are asked for
// and the table leaves n standing. 1 is composite with status 0. A number whose test runs out of memory counts as
// composite too, with the rounds passed until then or PRIME_NO_PREDECESSOR.
TB_API int bnProbablePrime(const BigNum& n, std::uint32_t rounds, std::int32_t* status = nullptr);
inline constexpr std::int32_t PRIME_DIVISIBLE = -1;
inline constexpr std::int32_t PRIME_EVEN = -2;
inline constexpr std::int32_t PRIME_NO_PREDECESSOR = -3;

// Searches upwards from start, on one worker thread per processor but one (at least one) in background mode, for a
// prime p above start with gcd(p - 1, e) = 1 (e may be null); with safePrime set also (p - 1) / 2 is prime and
// p = 3 mod 4. Past the last number of start's bit length it begins anew at 0, so that p then is below start; callers
// who need the length leave room above the start. Builds the table for that length when there is none, without telling
// the sink, and then frees it again. The sink (may be null) hears, one call at a time and on a worker's thread, the
// status of the last probable-prime test of each tested candidate; those that e rejects are not tested.
// The first status that is not 0, the sink's reply included, ends the search, even when a prime is found at the same
// time. BN_E_RANGE when a search is running already, for an even e (p - 1 is even), and when all numbers of that length
// were tried in vain; BN_E_MEMORY also when no worker could be started. prime is written on success only, and may be
// the start.
[[nodiscard]] Status bnSearchPrime(BigNum& prime, const BigNum& start, bool safePrime, const BigNum* e,
                                   ProgressSink* sink);

} // namespace toolbelt
