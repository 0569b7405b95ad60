// RSA key generation (FIPS 186, RFC 8017) from the caller's random bytes, and the self-test of a key.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/bignum/primes.h"
#include "crypto/pka/rsa_key.h"

namespace toolbelt {

// Makes a key with a modulus of length bytes (RSA_GENERATE_MIN_LENGTH to PKA_MAX_KEY_BITS / 8; PKA_E_LENGTH otherwise).
// seed holds length random bytes, the starts of the two primes, and is written to: the top bit of each start is set.
// The modulus has 8 * length bits for certain when the two highest bits of both halves (seed[0] and seed[length / 2])
// are set. e of 0 selects 65537; PKA_E_KEY for an even e or 1. The sink (may be null) hears "Generates prime table\n"
// when there is no table, "Finds prime P\n" and "Finds prime Q\n" with bit lengths, and what the prime search reports;
// a reply other than 0 ends the work and is returned. With safePrimes set, (p - 1) / 2 and (q - 1) / 2 are prime, which
// takes many times as long. One generation runs at a time in a
// process (3 for a second search); 4 also when a start close below its next power of 2 makes the search wrap around, or
// the finished key fails its self-test. *key is written on success only; the caller frees it with freeRsaKey. The
// caller wipes the seed.
[[nodiscard]] TB_API Status generateRsa(RsaPrivateKey** key, std::uint8_t* seed, std::uint32_t length, std::uint32_t e,
                                        ProgressSink* sink, bool safePrimes);
inline constexpr std::uint32_t RSA_GENERATE_MIN_LENGTH = 16;

// Whether a fixed message survives a public and then a private operation. False also when memory runs out.
[[nodiscard]] TB_API bool rsaSelfTest(const RsaPrivateKey& key);

} // namespace toolbelt
