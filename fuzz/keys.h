// Keys as the targets make them and write them.
#pragma once

#include <initializer_list>
#include <memory>

#include "crypto/pka/pka.h"
#include "fuzz/natural.h"

namespace toolbelt::fuzz {

using Key = std::unique_ptr<cPKA>;

inline void append(Bytes& bytes, const Bytes& more)
{
    bytes.insert(bytes.end(), more.begin(), more.end());
}
// Prefixed numbers, one after another.
inline Bytes blobOf(std::initializer_list<Bytes> numbers)
{
    Bytes blob;
    for (const Bytes& number : numbers) append(blob, prefixed(number));
    blob.shrink_to_fit();
    return blob;
}
inline Bytes exported(cPKA& key, Status (cPKA::*slot)(std::uint8_t*, std::uint32_t*))
{
    Bytes bytes(8192);
    std::uint32_t size = sizeOf(bytes);
    require((key.*slot)(bytes.data(), &size) == STATUS_OK, "a key is exported");
    bytes.resize(size);
    return bytes;
}

} // namespace toolbelt::fuzz
