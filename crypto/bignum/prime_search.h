// The parts of the prime search: trial division of numbers that follow each other, and the search on a given number of
// threads.
#pragma once

#include "crypto/base/heap.h"
#include "crypto/bignum/primes.h"

namespace toolbelt::detail {

// The remainders of a number by every entry of the table of small primes. They make trial division of the numbers
// behind it a matter of words, whatever their length. They give the number away, and are wiped.
class Residues
{
public:
    // Offsets stay below this.
    static constexpr std::uint32_t REACH = 1u << 31;

    [[nodiscard]] Status build(const BigNum& base) noexcept;
    // Whether a prime of the table, from the first-th on, divides base + offset.
    bool divisible(std::uint32_t offset, std::uint32_t first = 0) const noexcept;

private:
    // Offsets below this are sieved: most primes of 2048 bits and less have no longer way to the next.
    static constexpr std::uint32_t SIEVED = 8192;

    SecretArray<std::uint32_t> rests_;
    SecretBytes sieve_; // 1 at the offsets of multiples of an entry, the first one, 2, left out
};

// bnSearchPrime on that many threads. BN_E_MEMORY when none of them could be started.
[[nodiscard]] Status searchPrime(BigNum& prime, const BigNum& start, bool safePrime, const BigNum* e,
                                 ProgressSink* sink, std::uint32_t workers);

// When not 0, bnSearchPrime starts that many: on one thread a search is the same on every machine. For tests.
extern std::uint32_t fixedWorkers;

} // namespace toolbelt::detail
