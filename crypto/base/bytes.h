// Loads and stores of words in a stated byte order, from bytes of any alignment.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace toolbelt {

static_assert(std::endian::native == std::endian::little, "the loads below assume a little-endian host");

inline std::uint32_t load32le(const std::uint8_t* bytes) noexcept
{
    std::uint32_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}
inline std::uint64_t load64le(const std::uint8_t* bytes) noexcept
{
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}
inline void store32le(std::uint8_t* bytes, std::uint32_t word) noexcept
{
    std::memcpy(bytes, &word, sizeof word);
}
inline void store64le(std::uint8_t* bytes, std::uint64_t word) noexcept
{
    std::memcpy(bytes, &word, sizeof word);
}

inline std::uint16_t load16be(const std::uint8_t* bytes) noexcept
{
    return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}
inline std::uint32_t load32be(const std::uint8_t* bytes) noexcept
{
    return __builtin_bswap32(load32le(bytes));
}
inline std::uint64_t load64be(const std::uint8_t* bytes) noexcept
{
    return __builtin_bswap64(load64le(bytes));
}
inline void store16be(std::uint8_t* bytes, std::uint16_t word) noexcept
{
    bytes[0] = static_cast<std::uint8_t>(word >> 8);
    bytes[1] = static_cast<std::uint8_t>(word);
}
inline void store32be(std::uint8_t* bytes, std::uint32_t word) noexcept
{
    store32le(bytes, __builtin_bswap32(word));
}
inline void store64be(std::uint8_t* bytes, std::uint64_t word) noexcept
{
    store64le(bytes, __builtin_bswap64(word));
}

} // namespace toolbelt
