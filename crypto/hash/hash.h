// Message digests: the abstract class, the registry and the one-shot call.
//
//   cHashAlg* hash;
//   if (createHash(&hash, 0x80) == CRYPT_OK && hash != nullptr) {
//       if (hashBuffer(hash, output, data, size) == CRYPT_OK) ...
//       destroyHash(hash);
//   }
//
// An object is used by one thread at a time; the registry is read-only. After `final` an object is reset before reuse.
#pragma once

#include <cstdint>

#include "crypto/base/crypt_status.h"
#include "crypto/base/export.h"
#include "crypto/base/heap.h"

namespace toolbelt {

class TB_API cHashAlg : public HeapObject
{
public:
    // Digest length in bytes.
    virtual std::uint32_t getSize();
    // Takes in length bytes; data may be null when length is 0. How a message is split over updates does not matter,
    // but for id 0x82, which pads every update by itself (crypto/hash/keccak512.h).
    virtual Status update(const std::uint8_t* data, std::uint32_t length);
    // Writes getSize() bytes.
    virtual Status final(std::uint8_t* output);
    // Starts a new message.
    virtual Status reset();
    virtual ~cHashAlg();
};

// One digest on offer. Ids below 0x80 are the numbers of RFC 4880, those from 0x80 up are the engine's own.
struct HashRow
{
    std::int32_t id;
    cHashAlg* (*create)(); // a new object, already reset; null when memory has run out
    std::uint32_t size;    // digest length in bytes
    const char* name;
};

inline constexpr std::uint32_t HASH_ROW_COUNT = 9;
inline constexpr std::uint32_t OFFERED_HASH_COUNT = 8;
// Every id that createHash knows; 8 and 0x80 are the same digest.
extern TB_API const HashRow hashRows[HASH_ROW_COUNT];
// The ids to offer to a user, in the order to offer them.
extern TB_API const std::int32_t offeredHashes[OFFERED_HASH_COUNT];

// Stores a new digest object in *out (null when memory has run out: test it) and returns 0. An id without a row gives
// CRYPT_E_UNKNOWN_ALGORITHM and leaves *out alone. The caller releases the object with destroyHash.
[[nodiscard]] TB_API Status createHash(cHashAlg** out, std::int32_t id);
// Null is ignored.
TB_API void destroyHash(cHashAlg* hash);
TB_API std::uint32_t hashSize(cHashAlg* hash);
// reset, update and final in one call; stops at the first status that is not 0 and returns it.
[[nodiscard]] TB_API Status hashBuffer(cHashAlg* hash, std::uint8_t* output, const std::uint8_t* data,
                                       std::uint32_t length);

} // namespace toolbelt
