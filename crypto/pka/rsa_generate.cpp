// RSA key generation: two primes searched upwards from the caller's random bytes, then the key's completion.
#include "crypto/pka/rsa_generate.h"

#include <cstring>

#include "crypto/base/heap.h"
#include "crypto/pka/generation.h"
#include "crypto/pka/pka.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t DEFAULT_EXPONENT = 65537;

// One prime: its phase is reported, then the search runs from the start.
Status findPrime(BigNum& prime, const BigNum& start, const char* phase, std::uint32_t bits, const RsaPrivateKey& key,
                 ProgressSink* sink, bool safePrimes)
{
    if (const Status status = reportPhase(sink, phase, bits)) return status;
    if (const Status status = bnSearchPrime(prime, start, safePrimes, key.e, sink)) return status;
    // A search from the very end of the range begins anew at small numbers.
    return bnBitLength(prime) == bnBitLength(start) ? STATUS_OK : PKA_E_KEY;
}

Status findPrimes(RsaPrivateKey& key, std::uint8_t* seed, std::uint32_t length, ProgressSink* sink, bool safePrimes)
{
    const std::uint32_t half = length / 2, rest = length - half;
    BigNum start;
    if (const Status status = bnImport(start, seed, half)) return status;
    if (const Status status = findPrime(*key.p, start, "Finds prime P\n", 8 * half, key, sink, safePrimes))
        return status;

    seed[half] |= 0x80;
    if (const Status status = bnImport(start, seed + half, rest)) return status;
    for (;;) {
        if (const Status status = findPrime(*key.q, start, "Finds prime Q\n", 8 * rest, key, sink, safePrimes))
            return status;
        if (bnCompare(*key.q, *key.p) != 0) return STATUS_OK;
        const std::uint32_t bits = bnBitLength(*key.q);
        if (const Status status = bnAddWord(start, *key.q, 2)) return status;
        bnClearBit(start, bits); // wraps instead of growing by a bit
    }
}

} // namespace

Status generateRsa(RsaPrivateKey** key, std::uint8_t* seed, std::uint32_t length, std::uint32_t e, ProgressSink* sink,
                   bool safePrimes)
{
    if (length < RSA_GENERATE_MIN_LENGTH || length > PKA_MAX_KEY_BITS / 8) return PKA_E_LENGTH;
    if (e == 0) e = DEFAULT_EXPONENT;
    if (e % 2 == 0 || e == 1) return PKA_E_KEY; // no such prime exists, or every block would be its own signature

    RsaPrivateOwner record(newRsaPrivateKey());
    if (!record) return PKA_E_MEMORY;
    if (const Status status = bnAddWord(*record->e, *record->e, e)) return status;
    record->bits = static_cast<std::uint16_t>(8 * length);
    seed[0] |= 0x80;
    {
        GenerationTable table;
        if (const Status status = table.ensure(8 * length, sink)) return status;
        if (const Status status = findPrimes(*record, seed, length, sink, safePrimes)) return status;
        // Puts the primes in order, too.
        if (const Status status = completeRsaPrivate(*record)) return status;
    }
    if (!rsaSelfTest(*record)) return PKA_E_KEY;
    *key = record.release();
    return STATUS_OK;
}

bool rsaSelfTest(const RsaPrivateKey& key)
{
    const std::uint32_t k = rsaLength(key.bits);
    SecretBytes message(k), output(k);
    if (!message || !output || k == 0) return false;
    for (std::uint32_t i = 0; i < k; ++i) message[i] = static_cast<std::uint8_t>(i == 0 ? 0 : i + 65);
    const RsaPublicKey view{key.bits, key.n, key.e}; // shows the numbers of the private record
    if (rsaPublicOperation(view, message.data(), output.data(), RSA_RAW) != STATUS_OK) return false;
    if (rsaPrivateOperation(key, output.data(), output.data(), RSA_RAW) != STATUS_OK) return false;
    return std::memcmp(message.data(), output.data(), k) == 0;
}

} // namespace toolbelt
