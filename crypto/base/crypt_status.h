// Status codes that the digest and the cipher layer share.
#pragma once

#include "crypto/base/status.h"

namespace toolbelt {

inline constexpr Status CRYPT_OK = 0;
inline constexpr Status CRYPT_E_NULL_CONTEXT = 1;       // a context routine was given no context
inline constexpr Status CRYPT_E_CONTEXT_ALLOC = 2;      // memory for a context or a working copy ran out
inline constexpr Status CRYPT_E_UNKNOWN_ALGORITHM = 22; // no registry row has the id
inline constexpr Status CRYPT_E_NOT_IMPLEMENTED = 23;   // the class does not offer the operation

} // namespace toolbelt
