// DigestInfo (RFC 8017, section 9.2): what an RSA signature of other programs holds around a digest. The library signs
// the bytes that it is given and reads any DigestInfo, so only its callers write one. Inline, because the tool, which
// links to the DLL's exports alone, needs it as much as the flat C surface does.
#pragma once

#include <cstdint>
#include <cstring>

#include "crypto/encoding/der.h"

namespace toolbelt {

// The identifier of a digest's algorithm, as the content of an OBJECT IDENTIFIER.
struct DigestIdentifier
{
    std::int32_t id; // of the registry
    std::uint8_t length;
    std::uint8_t octets[9];
};
// Digests that are not here have no identifier in use.
inline constexpr DigestIdentifier digestIdentifiers[] = {
    {1, 8, {0x2a, 0x86, 0x48, 0x86, 0xf7, 0x0d, 0x02, 0x05}},        // MD5
    {2, 5, {0x2b, 0x0e, 0x03, 0x02, 0x1a}},                          // SHA-1
    {3, 5, {0x2b, 0x24, 0x03, 0x02, 0x01}},                          // RIPEMD-160
    {8, 9, {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x01}},  // SHA-256
    {10, 9, {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x03}}, // SHA-512
};

inline const DigestIdentifier* findDigestIdentifier(std::int32_t id) noexcept
{
    for (const DigestIdentifier& identifier : digestIdentifiers)
        if (identifier.id == id) return &identifier;
    return nullptr;
}

inline constexpr std::uint32_t DIGEST_INFO_OVERHEAD = 10 + sizeof DigestIdentifier::octets;

// Writes the digest with what stands around it, at most digestLength + DIGEST_INFO_OVERHEAD bytes, and returns how
// many. A digest of the registry has at most 64 bytes, so every length fits one octet.
inline std::uint32_t writeDigestInfo(std::uint8_t* output, const DigestIdentifier& identifier,
                                     const std::uint8_t* digest, std::uint32_t digestLength) noexcept
{
    const std::uint8_t oid = identifier.length, algorithm = static_cast<std::uint8_t>(oid + 4),
                       size = static_cast<std::uint8_t>(digestLength);
    const std::uint8_t front[] = {DER_CONSTRUCTED_SEQUENCE,
                                  static_cast<std::uint8_t>(algorithm + size + 4),
                                  DER_CONSTRUCTED_SEQUENCE,
                                  algorithm,
                                  DER_OID,
                                  oid};
    const std::uint8_t between[] = {DER_NULL, 0, DER_OCTET_STRING, size};
    std::uint8_t* at = output;
    const auto put = [&at](const std::uint8_t* bytes, std::uint32_t count) {
        std::memcpy(at, bytes, count);
        at += count;
    };
    put(front, sizeof front);
    put(identifier.octets, oid);
    put(between, sizeof between);
    put(digest, digestLength);
    return static_cast<std::uint32_t>(at - output);
}

} // namespace toolbelt
