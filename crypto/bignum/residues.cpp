// Trial division of the numbers behind a base: near ones are sieved, the others' remainders are found from the base's.
#include <cstring>

#include "crypto/bignum/limbs_word.h"
#include "crypto/bignum/operands.h"
#include "crypto/bignum/prime_search.h"

namespace toolbelt::detail {

Status Residues::build(const BigNum& base) noexcept
{
    std::uint32_t count;
    const std::uint32_t* primes = bnPrimeTable(&count);
    rests_ = SecretArray<std::uint32_t>(count);
    sieve_ = SecretBytes(SIEVED);
    if (!rests_ || !sieve_) return BN_E_MEMORY;
    std::memset(sieve_.data(), 0, SIEVED);
    const Operand value(base);
    for (std::uint32_t i = 0; i < count;) {
        // One pass over the base for as many primes as make a word.
        std::uint32_t end = i + 1, divisor = primes[i];
        for (; end < count && std::uint64_t{divisor} * primes[end] >> 32 == 0; ++end) divisor *= primes[end];
        const std::uint32_t rest = limbs::remainderByWord(value.data, value.count, divisor);
        for (; i < end; ++i) rests_[i] = rest % primes[i];
    }
    for (std::uint32_t i = 1; i < count; ++i)
        for (std::uint32_t offset = rests_[i] ? primes[i] - rests_[i] : 0; offset < SIEVED; offset += primes[i])
            sieve_[offset] = 1;
    return STATUS_OK;
}

bool Residues::divisible(std::uint32_t offset, std::uint32_t first) const noexcept
{
    const std::uint32_t* primes = bnPrimeTable(nullptr);
    std::uint32_t i = first;
    if (offset < SIEVED && i <= 1) {
        if (sieve_[offset]) return true;
        return i == 0 && rests_.size() != 0 && (rests_[0] + offset) % 2 == 0;
    }
    for (; i < rests_.size(); ++i)
        if ((rests_[i] + offset) % primes[i] == 0) return true;
    return false;
}

} // namespace toolbelt::detail
