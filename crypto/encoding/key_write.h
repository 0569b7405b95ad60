// Public keys as SubjectPublicKeyInfo (RFC 5280, section 4.1.2.7): the writing side of key_text.h.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/pka/pka.h"

namespace toolbelt {

// Writes the key, and of a private key its public half. *inOutSize is the capacity and becomes the length;
// STATUS_BUFFER_TOO_SMALL with the size needed, KEY_E_NO_READER for a key of no known algorithm, or what the key's own
// export or makePublic answers.
[[nodiscard]] TB_API Status exportSubjectPublicKeyInfo(cPKA& key, std::uint8_t* output, std::uint32_t* inOutSize);

} // namespace toolbelt
