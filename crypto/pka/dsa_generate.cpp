// DSA key generation by FIPS 186-4: the domain of A.1.1.2 with SHA-1, the generator of A.2.1, the key pair of B.1.1.
// Whoever knows the domain's seed can follow how p and q came about (A.1.1.3).
#include <algorithm>
#include <memory>

#include "crypto/bignum/modular.h"
#include "crypto/bignum/witness.h"
#include "crypto/hash/hash.h"
#include "crypto/pka/dsa_key.h"
#include "crypto/pka/generation.h"
#include "crypto/pka/pka.h"

namespace toolbelt {
namespace {

constexpr std::int32_t SHA1_ID = 2;
constexpr std::uint32_t HASH_LENGTH = 20;
constexpr std::uint32_t Q_BITS = 8 * HASH_LENGTH;
constexpr std::uint32_t ROUNDS = 40; // Fermat rounds, as many as table C.1 asks of another test

struct DestroyHash
{
    void operator()(cHashAlg* hash) const { destroyHash(hash); }
};

// Adds 1 to a domain_parameter_seed, modulo 2^160.
void increment(std::uint8_t* seed)
{
    for (std::uint32_t i = DSA_DOMAIN_SEED_LENGTH; i-- > 0 && ++seed[i] == 0;) {
    }
}

class DomainSearch
{
public:
    DomainSearch(DsaKey& key, std::uint32_t bits, std::uint8_t* seed, ProgressSink* sink)
        : key_(key), bits_(bits), blocks_((bits + Q_BITS - 1) / Q_BITS), seed_(seed), sink_(sink)
    {}

    Status run()
    {
        cHashAlg* made = nullptr;
        if (const Status status = createHash(&made, SHA1_ID)) return status;
        hash_.reset(made);
        bytes_ = SecretBytes(std::size_t(blocks_) * HASH_LENGTH);
        if (!hash_ || !bytes_) return PKA_E_MEMORY;
        for (;; increment(seed_)) {
            bool found = false;
            if (const Status status = findQ()) return status;
            if (const Status status = findP(found)) return status;
            if (found) return STATUS_OK;
        }
    }

private:
    Status test(bool& isPrime, const BigNum& candidate)
    {
        // As bnProbablePrime does, which would take a failed allocation for a composite number.
        std::int32_t outcome = PRIME_DIVISIBLE;
        if (bnTrialDivision(candidate)) {
            std::uint32_t passed = 0;
            BigNum predecessor;
            if (const Status status = bnSubtractWord(predecessor, candidate, 1)) return status;
            if (const Status status = detail::fermatRounds(passed, candidate, predecessor, ROUNDS)) return status;
            outcome = static_cast<std::int32_t>(passed);
        }
        isPrime = outcome == static_cast<std::int32_t>(ROUNDS);
        return reportPhase(sink_, nullptr, static_cast<std::uint32_t>(outcome));
    }

    // Steps 5 to 9: q is the seed's digest with its highest and lowest bit set. Counts the seed up to the first prime.
    Status findQ()
    {
        if (const Status status = reportPhase(sink_, "Finds prime Q\n", Q_BITS)) return status;
        for (;; increment(seed_)) {
            std::uint8_t digest[HASH_LENGTH];
            if (const Status status = hashBuffer(hash_.get(), digest, seed_, DSA_DOMAIN_SEED_LENGTH)) return status;
            digest[0] |= 0x80;
            digest[HASH_LENGTH - 1] |= 1;
            bool isPrime = false;
            if (const Status status = bnImport(key_.q, digest, HASH_LENGTH)) return status;
            if (const Status status = test(isPrime, key_.q)) return status;
            if (isPrime) return STATUS_OK;
        }
    }

    // Steps 10 to 11.9: 4 * bits numbers with p = 1 mod 2q, each from the digests of the seed's next successors.
    Status findP(bool& found)
    {
        if (const Status status = reportPhase(sink_, "Finds prime P\n", bits_)) return status;
        BigNum twoQ, c;
        if (const Status status = bnShiftLeft(twoQ, key_.q, 1)) return status;
        std::uint8_t successor[DSA_DOMAIN_SEED_LENGTH];
        std::copy_n(seed_, sizeof successor, successor);
        for (std::uint32_t counter = 0; counter < 4 * bits_ && !found; ++counter) {
            for (std::uint32_t block = blocks_; block-- > 0;) { // the first digest is the lowest
                increment(successor);
                std::uint8_t* const place = bytes_.data() + block * HASH_LENGTH;
                if (const Status status = hashBuffer(hash_.get(), place, successor, sizeof successor)) return status;
            }
            // X has its highest bit set, and what the digests hold above it is dropped.
            const std::uint32_t width = bits_ / 8;
            std::uint8_t* const x = bytes_.data() + (bytes_.size() - width);
            x[0] |= 0x80;
            if (const Status status = bnImport(key_.p, x, width)) return status;
            if (const Status status = bnModulo(c, key_.p, twoQ)) return status;
            if (const Status status = bnSubtract(key_.p, key_.p, c)) return status;
            if (const Status status = bnAddWord(key_.p, key_.p, 1)) return status;
            if (bnBitLength(key_.p) < bits_) continue;
            if (const Status status = test(found, key_.p)) return status;
        }
        return STATUS_OK;
    }

    DsaKey& key_;
    std::uint32_t bits_, blocks_;
    std::uint8_t* seed_;
    ProgressSink* sink_;
    std::unique_ptr<cHashAlg, DestroyHash> hash_;
    SecretBytes bytes_;
};

// g = h^((p - 1) / q) mod p for the least h from 2 on that gives no 1.
Status findGenerator(DsaKey& key)
{
    BigNum e, remainder, h;
    if (const Status status = bnSubtractWord(e, key.p, 1)) return status;
    if (const Status status = bnDivide(&e, remainder, e, key.q)) return status;
    if (const Status status = bnAddWord(h, h, 2)) return status;
    for (;;) {
        if (const Status status = bnModExp(key.g, h, e, key.p)) return status;
        if (bnCompareWord(key.g, 1) != 0) return STATUS_OK;
        if (const Status status = bnAddWord(h, h, 1)) return status;
    }
}

// x = c mod (q - 1) + 1, from 64 bits more than q has, so that all values are as good as equally likely.
Status makeKeyPair(DsaKey& key, const std::uint8_t* bytes, std::uint32_t length)
{
    BigNum c, limit;
    if (const Status status = bnImport(c, bytes, length)) return status;
    if (const Status status = bnSubtractWord(limit, key.q, 1)) return status;
    if (const Status status = bnModulo(c, c, limit)) return status;
    if (const Status status = bnAddWord(key.x, c, 1)) return status;
    return ensureDsaPublicValue(key);
}

} // namespace

Status generateDsa(DsaKey** key, std::uint32_t bits, std::uint8_t* seed, std::uint32_t seedLength, ProgressSink* sink)
{
    if (bits < DSA_MIN_BITS || bits > PKA_MAX_KEY_BITS || bits % 64 != 0 || seedLength != DSA_SEED_LENGTH)
        return PKA_E_LENGTH;
    DsaOwner record(newDsaKey(DSA_PRIVATE_MAGIC));
    if (!record) return PKA_E_MEMORY;
    {
        GenerationTable table;
        if (const Status status = table.ensure(bits, sink)) return status;
        if (const Status status = DomainSearch(*record, bits, seed, sink).run()) return status;
    }
    if (const Status status = findGenerator(*record)) return status;
    if (const Status status = makeKeyPair(*record, seed + DSA_DOMAIN_SEED_LENGTH, seedLength - DSA_DOMAIN_SEED_LENGTH))
        return status;
    *key = record.release();
    return STATUS_OK;
}

} // namespace toolbelt
