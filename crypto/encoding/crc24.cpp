// CRC-24 (RFC 4880, section 6.1), most significant bit first, generator 0x1864CFB. The register is kept at the top of a
// 32-bit word, where four bytes at a time go through four tables: table k holds the remainder of a byte that k more
// bytes follow.
#include "crypto/encoding/crc24.h"

#include <array>

#include "crypto/base/bytes.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t POLYNOMIAL = 0x864CFB00; // without its top bit, moved to the top of the word

using Tables = std::array<std::array<std::uint32_t, 256>, 4>;

constexpr Tables makeTables()
{
    Tables tables = {};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t remainder = byte << 24;
        for (auto& table : tables) {
            for (int bit = 0; bit < 8; ++bit)
                remainder = (remainder << 1) ^ ((remainder & 0x80000000) != 0 ? POLYNOMIAL : 0);
            table[byte] = remainder;
        }
    }
    return tables;
}

constexpr Tables tables = makeTables();

} // namespace

std::uint32_t crc24(const std::uint8_t* data, std::uint32_t size, std::uint32_t start)
{
    std::uint32_t crc = start << 8;
    for (; size >= 4; data += 4, size -= 4) {
        crc ^= load32be(data);
        crc = tables[3][crc >> 24] ^ tables[2][crc >> 16 & 0xFF] ^ tables[1][crc >> 8 & 0xFF] ^ tables[0][crc & 0xFF];
    }
    for (; size != 0; ++data, --size) crc = (crc << 8) ^ tables[0][(crc >> 24) ^ *data];
    return crc >> 8;
}

} // namespace toolbelt
