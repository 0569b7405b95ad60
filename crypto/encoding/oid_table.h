// OidTable: the tree of known object identifiers, with names and algorithm codes.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"

namespace toolbelt {

inline constexpr std::uint8_t OID_NONE = 255; // a code that a row does not have

// Arcs are compared by whole components. A code that names an algorithm does not promise that the engine offers it.
struct OidRow
{
    const OidRow* children;
    std::uint32_t childCount;
    const char* arc;       // one or more dotted components
    const char* shortName; // may be null
    const char* longName;  // never null in OidTable
    std::uint8_t digest;   // registry id of the digest of a signature or digest algorithm
    std::uint8_t reserved1;
    std::uint8_t publicKey; // algorithm code of keys and of signature algorithms
    std::uint8_t reserved2;
};

inline constexpr std::uint32_t OID_ROOT_COUNT = 15;
inline constexpr std::uint32_t OID_ROW_COUNT = 256; // roots and descendants together
extern TB_API const OidRow OidTable[OID_ROOT_COUNT];

// Finds the row of a dotted, zero-terminated identifier. name (may be null) receives the zero-terminated chain of names
// from the root to the row, joined by "-", cut to nameCapacity. Returns the length of the whole chain, 0 when there is
// no such row (row is then left alone, name empty). row may be null. A row gives its short name, else its long name,
// else "UDF".
TB_API std::uint32_t lookupOid(char* name, std::uint32_t nameCapacity, const char* dottedText, const OidRow** row);

} // namespace toolbelt
