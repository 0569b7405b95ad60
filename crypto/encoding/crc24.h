// The CRC-24 of RFC 4880, section 6.1.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"

namespace toolbelt {

inline constexpr std::uint32_t CRC24_START = 0xB704CE;

// The checksum of size bytes. Passing an earlier result as start goes on from there.
TB_API std::uint32_t crc24(const std::uint8_t* data, std::uint32_t size, std::uint32_t start = CRC24_START);

} // namespace toolbelt
