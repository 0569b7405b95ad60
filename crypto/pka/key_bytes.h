// What the keys of all algorithms share when they are read from bytes and written to them: prefixed numbers back to
// back, and INTEGERs in a SEQUENCE.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "crypto/bignum/bignum.h"
#include "crypto/encoding/der.h"
#include "crypto/pka/status.h"

namespace toolbelt {

using NumberList = std::initializer_list<const BigNum*>;

// Longer than any number of a key may be.
bool isTooLong(const BigNum& number);
// Whether the number lies in least..limit-1.
bool isWithin(const BigNum& number, std::uint64_t least, const BigNum& limit);

// Reads prefixed numbers at a running offset.
[[nodiscard]] bool readPrefixed(std::initializer_list<BigNum*> numbers, const std::uint8_t* blob, std::uint32_t length,
                                std::uint32_t& offset);
// Reads INTEGERs that must use up the bytes.
[[nodiscard]] bool readIntegers(std::initializer_list<BigNum*> numbers, const std::uint8_t* data,
                                std::uint32_t available);
bool isSequence(const DerElement& element);
// Reads a private key's SEQUENCE: the version 0 and these INTEGERs, which fill it.
[[nodiscard]] bool readVersionedSequence(std::initializer_list<BigNum*> numbers, const DerElement& sequence);

// *inOutSize is the capacity and becomes the length; STATUS_BUFFER_TOO_SMALL with the size needed. PKA_E_RANGE when a
// number cannot be written.
[[nodiscard]] Status writePrefixed(NumberList numbers, std::uint8_t* output, std::uint32_t* inOutSize);
// A SEQUENCE of INTEGERs, the first of them, when asked for, the version 0. PKA_E_HEADER when it cannot be written.
[[nodiscard]] Status writeSequence(bool withVersion, NumberList numbers, std::uint8_t* output,
                                   std::uint32_t* inOutSize);

} // namespace toolbelt
