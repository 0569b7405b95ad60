// Status codes of numbers and of modular arithmetic.
#pragma once

#include "crypto/base/status.h"

namespace toolbelt {

inline constexpr Status BN_E_MEMORY = 2; // the limb array could not be allocated
// A result would be negative, a divisor or modulus is 0, a borrowed number is too small, a byte index lies beyond the
// number, an operand is too long, or a table that may be built only once exists.
inline constexpr Status BN_E_RANGE = 3;
inline constexpr Status BN_E_NO_INVERSE = 5; // the operands have a common factor

} // namespace toolbelt
