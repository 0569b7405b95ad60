// Status codes of the encodings: base64 and armour, DER, certificates, key texts.
#pragma once

#include "crypto/base/status.h"

namespace toolbelt {

// DER and certificates
inline constexpr Status DER_E_MEMORY = 7;             // an allocation failed
inline constexpr Status DER_E_LIMIT = 8;              // beyond a limit, or a structural rule of a certificate is broken
inline constexpr Status DER_E_LENGTH = 10;            // runs past the data, wrong length of a time, or data left over
inline constexpr Status DER_E_TAG = 11;               // an unexpected tag
inline constexpr Status DER_E_MALFORMED = 12;         // not what the encoding allows; a key that could not be read
inline constexpr Status DER_E_UNKNOWN_ALGORITHM = 15; // the algorithm identifier has no row in OidTable
inline constexpr Status DER_E_NULL_PARAMETERS = 16;   // DSA parameters given as NULL
inline constexpr Status DER_E_NOT_FOUND = 17;         // the certificate has no such extension
inline constexpr Status KEY_E_NO_READER = 33;         // no key class reads the algorithm's keys

// base64 and armoured text
inline constexpr Status TEXT_E_MALFORMED = 41; // begin or end line missing, too many pads, or a group that does not fit
inline constexpr Status TEXT_E_CONSISTENCY = 52; // the encoder's own check failed, or a size beyond 32 bits
inline constexpr Status TEXT_E_CHECKSUM = 57;    // the checksum line is cut short or does not match

} // namespace toolbelt
