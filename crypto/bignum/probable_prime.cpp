// The probable-prime test: trial division by the table of small primes, then Fermat rounds with random witnesses. A
// Carmichael number without small factors passes every round whose witness shares no factor with it.
#include "crypto/bignum/limbs_word.h"
#include "crypto/bignum/modular.h"
#include "crypto/bignum/operands.h"
#include "crypto/bignum/primes.h"
#include "crypto/bignum/witness.h"

namespace toolbelt {

namespace detail {

Status fermatRounds(std::uint32_t& passed, const BigNum& n, const BigNum& nMinusOne, std::uint32_t rounds) noexcept
{
    const Operand value(n);
    BigNum power;
    for (passed = 0; passed < rounds; ++passed) {
        Limb witness;
        do {
            witness = drawWitness();
            if (value.count == 1) witness %= value.data[0];
        } while (witness == 0);
        BigNum base; // shows the witness
        base.count = 1;
        base.limbs = &witness;
        base.borrowed = 1;
        const Status status = bnModExp(power, base, nMinusOne, n);
        if (status != STATUS_OK) return status;
        if (bnCompareWord(power, 1) != 0) break;
    }
    return STATUS_OK;
}

} // namespace detail

int bnTrialDivision(const BigNum& n)
{
    std::uint32_t count;
    const std::uint32_t* primes = bnPrimeTable(&count);
    const detail::Operand value(n);
    for (std::uint32_t i = 0; i < count; ++i)
        if (limbs::remainderByWord(value.data, value.count, primes[i]) == 0) return 0;
    return 1;
}

int bnFermatRound(const BigNum& n, const BigNum& nMinusOne)
{
    if (bnCompareWord(n, 1) <= 0) return 0; // no witness lies between 0 and n
    std::uint32_t passed;
    return detail::fermatRounds(passed, n, nMinusOne, 1) == STATUS_OK && passed == 1;
}

int bnProbablePrime(const BigNum& n, std::uint32_t rounds, std::int32_t* status)
{
    std::int32_t ignored;
    std::int32_t& outcome = status ? *status : ignored;
    if (bnPrimeTable(nullptr) && !bnTrialDivision(n)) {
        outcome = PRIME_DIVISIBLE;
        return 0;
    }
    if (rounds == 0) return 1;
    if (bnTestBit(n, 0) == 0) {
        outcome = PRIME_EVEN;
        return 0;
    }
    BigNum nMinusOne;
    if (bnSubtractWord(nMinusOne, n, 1) != STATUS_OK) {
        outcome = PRIME_NO_PREDECESSOR;
        return 0;
    }
    std::uint32_t passed = 0;
    const Status failure = bnCompareWord(n, 1) == 0 ? STATUS_OK : detail::fermatRounds(passed, n, nMinusOne, rounds);
    outcome = static_cast<std::int32_t>(passed);
    return failure == STATUS_OK && passed == rounds;
}

} // namespace toolbelt
