// PKCS #1 v1.5 blocks (RFC 8017, sections 7.2 and 9.2): 00, block type, padding, 00, data.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/pka/status.h"

namespace toolbelt {

enum Pkcs1Type : std::uint8_t
{
    PKCS1_SIGNATURE = 1,  // padded with FF
    PKCS1_ENCRYPTION = 2, // padded with random non-zero bytes of the runtime's rand(), re-seeded from the clock
};

// Writes a block of k bytes around the data. PKA_E_DATA_TOO_LONG when length > k - 10; the block is then untouched.
[[nodiscard]] TB_API Status pkcs1Pad(std::uint8_t* block, std::uint32_t k, Pkcs1Type type, const std::uint8_t* data,
                                     std::uint32_t length);
// Finds the data of a block: payload points into it. PKA_E_BLOCK when it is malformed. No minimum padding is demanded.
[[nodiscard]] TB_API Status pkcs1Unpad(const std::uint8_t** payload, std::uint32_t* payloadLength,
                                       const std::uint8_t* block, std::uint32_t k, Pkcs1Type type);

} // namespace toolbelt
