// Pairs of numbers: the signatures of DSA and ElGamal (r and s) and the ciphertexts of ElGamal (a and b), in prefixed
// form, back to back, and in DER, a SEQUENCE of two INTEGERs.
#pragma once

#include <cstdint>

#include "crypto/bignum/bignum.h"
#include "crypto/pka/status.h"

namespace toolbelt {

enum class PairForm
{
    prefixed,
    der,
};

struct NumberPair
{
    BigNum first, second;
};

// Reads a pair. A DER one may lie in an OCTET STRING or a BIT STRING, as certificates carry it, and must fill it; what
// follows a pair is not looked at.
[[nodiscard]] bool readPair(NumberPair& pair, PairForm form, const std::uint8_t* bytes, std::uint32_t length);
// *outputLength is the capacity and becomes the length produced. Any failure but STATUS_BUFFER_TOO_SMALL, which does
// not arise when the capacity is that of pairCapacity, leaves it alone.
[[nodiscard]] Status writePair(const NumberPair& pair, PairForm form, std::uint8_t* output,
                               std::uint32_t* outputLength);
// The capacity that a writer demands before it knows its numbers: prefixed, two numbers of the length of a key of
// keyBits; DER, the longest pair of numbers of at most numberBits.
std::uint32_t pairCapacity(PairForm form, std::uint32_t keyBits, std::uint32_t numberBits);

} // namespace toolbelt
