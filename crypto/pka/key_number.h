// The numbers of a key record: each lives in a block of its own, taken with the record and wiped and freed with it.
#pragma once

#include "crypto/bignum/bignum.h"

namespace toolbelt {

// A new number of one zero limb; null when memory has run out.
BigNum* newKeyNumber();
// Wipes and frees a number. Null is ignored.
void freeKeyNumber(BigNum* number);

// y = g^x mod p where y is still 0: the public value that a private record of DSA or ElGamal need not hold.
[[nodiscard]] Status ensurePublicValue(BigNum& y, const BigNum& g, const BigNum& x, const BigNum& p);

} // namespace toolbelt
