// The numbers of a key record: each lives in a block of its own, taken with the record and wiped and freed with it.
#pragma once

#include "crypto/bignum/bignum.h"

namespace toolbelt {

// A new number of one zero limb; null when memory has run out.
BigNum* newKeyNumber();
// Wipes and frees a number. Null is ignored.
void freeKeyNumber(BigNum* number);

} // namespace toolbelt
