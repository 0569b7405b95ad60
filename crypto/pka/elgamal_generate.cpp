// ElGamal key generation: a safe prime p = 2q + 1, searched upwards from the caller's random bytes, and a small
// generator of its whole group.
#include "crypto/bignum/modular.h"
#include "crypto/pka/elgamal_key.h"
#include "crypto/pka/generation.h"
#include "crypto/pka/pka.h"

namespace toolbelt {
namespace {

constexpr std::uint64_t LEAST_GENERATOR = 3;

// Whether g has order p - 1, and neither g nor its inverse divides p - 1: signatures under such a g can be forged
// without the private key (D. Bleichenbacher, Generating ElGamal signatures without knowing the secret key, 1996).
Status isGoodGenerator(bool& good, const BigNum& g, const BigNum& p, const BigNum& pMinusOne, const BigNum& q)
{
    BigNum power, inverse, remainder;
    good = false;
    if (const Status status = bnModExp(power, g, q, p)) return status;
    if (bnCompareWord(power, 1) == 0) return STATUS_OK; // a square
    if (const Status status = bnModInverse(inverse, g, p)) return status;
    const BigNum* const divisors[] = {&g, &inverse};
    for (const BigNum* divisor : divisors) {
        if (const Status status = bnModulo(remainder, pMinusOne, *divisor)) return status;
        if (bnCompareWord(remainder, 0) == 0) return STATUS_OK;
    }
    good = true; // neither 1 nor p - 1, which divides itself: the order is 2q
    return STATUS_OK;
}

Status findGenerator(ElgamalKey& key)
{
    BigNum pMinusOne, q;
    if (const Status status = bnSubtractWord(pMinusOne, key.p, 1)) return status;
    if (const Status status = bnShiftRight(q, pMinusOne, 1)) return status;
    if (const Status status = bnAddWord(key.g, key.g, LEAST_GENERATOR)) return status;
    for (;;) {
        bool good = false;
        if (const Status status = isGoodGenerator(good, key.g, key.p, pMinusOne, q)) return status;
        if (good) return STATUS_OK;
        if (const Status status = bnAddWord(key.g, key.g, 1)) return status;
    }
}

// x = c mod (p - 3) + 2, in 2..p-2, from 64 bits more than p has, so that all values are as good as equally likely.
Status makeKeyPair(ElgamalKey& key, const std::uint8_t* bytes, std::uint32_t length)
{
    BigNum c, limit;
    if (const Status status = bnImport(c, bytes, length)) return status;
    if (const Status status = bnSubtractWord(limit, key.p, 3)) return status;
    if (const Status status = bnModulo(c, c, limit)) return status;
    if (const Status status = bnAddWord(key.x, c, 2)) return status;
    return ensureElgamalPublicValue(key);
}

} // namespace

Status generateElgamal(ElgamalKey** key, std::uint32_t bits, std::uint8_t* seed, std::uint32_t seedLength,
                       ProgressSink* sink)
{
    if (bits < ELGAMAL_MIN_BITS || bits > PKA_MAX_KEY_BITS || bits % 8 != 0 || seedLength != elgamalSeedLength(bits))
        return PKA_E_LENGTH;
    ElgamalOwner record(newElgamalKey(ELGAMAL_PRIVATE_MAGIC));
    if (!record) return PKA_E_MEMORY;
    const std::uint32_t length = bits / 8;
    {
        GenerationTable table;
        if (const Status status = table.ensure(bits, sink)) return status;
        if (const Status status = reportPhase(sink, "Finds prime P\n", bits)) return status;
        BigNum start;
        seed[0] |= 0x80;
        if (const Status status = bnImport(start, seed, length)) return status;
        if (const Status status = bnSearchPrime(record->p, start, true, nullptr, sink)) return status;
    }
    // From a start close below 2^bits the search may have wrapped around to small numbers.
    if (bnBitLength(record->p) != bits) return PKA_E_KEY;
    if (const Status status = findGenerator(*record)) return status;
    if (const Status status = makeKeyPair(*record, seed + length, seedLength - length)) return status;
    *key = record.release();
    return STATUS_OK;
}

} // namespace toolbelt
