// Status codes of the public-key layer.
#pragma once

#include "crypto/base/status.h"

namespace toolbelt {

inline constexpr Status PKA_E_MEMORY = 2;         // a working buffer could not be allocated
inline constexpr Status PKA_E_RANGE = 3;          // a prefixed number does not fit, or a key could not be completed
inline constexpr Status PKA_E_KEY = 4;            // key bytes malformed or beyond the limits
inline constexpr Status PKA_E_SHORT_INPUT = 6;    // a short, unpadded input to a small public exponent
inline constexpr Status PKA_E_HEADER = 8;         // the DER header of an output could not be built or written
inline constexpr Status PKA_E_IMPORT = 12;        // the key could not be read at creation
inline constexpr Status PKA_E_LENGTH = 29;        // an input has the wrong length for the key
inline constexpr Status PKA_E_NOT_OFFERED = 30;   // the class does not offer the operation
inline constexpr Status PKA_E_RAW_FAILED = 30;    // the same code: a raw operation with a prefixed side failed
inline constexpr Status PKA_E_OBJECT = 31;        // an object or a verification buffer could not be made
inline constexpr Status PKA_E_FAILED = 32;        // the operation or the verification failed
inline constexpr Status PKA_E_RANDOM = 35;        // the random pool has run dry
inline constexpr Status PKA_E_BLOCK = 39;         // a malformed PKCS #1 block
inline constexpr Status PKA_E_DATA_TOO_LONG = 56; // data too long to pad

} // namespace toolbelt
