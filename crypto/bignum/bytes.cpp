// Numbers from and to bytes, plain and with a bit-count prefix, and random ones.
#include "crypto/base/bytes.h"
#include "crypto/base/runtime_rand.h"
#include "crypto/bignum/operands.h"

namespace toolbelt {
namespace {

// Bit counts are written in 16 bits.
constexpr std::uint32_t prefixLimit = 65535;

std::uint32_t bytesOf(std::uint32_t bits) noexcept
{
    return bits / 8 + (bits % 8 != 0);
}

} // namespace

Status bnImport(BigNum& destination, const std::uint8_t* bytes, std::uint32_t size)
{
    return bnResize(destination, size, bytes);
}

void bnExport(std::uint8_t* output, std::uint32_t width, const BigNum& number)
{
    for (std::uint32_t i = 0; i < width; ++i) output[width - 1 - i] = bnGetByte(number, i);
}

std::uint8_t bnGetByte(const BigNum& number, std::uint32_t index)
{
    if (number.count <= 0 || index / 8 >= static_cast<std::uint32_t>(number.count)) return 0;
    return static_cast<std::uint8_t>(number.limbs[index / 8] >> index % 8 * 8);
}

Status bnSetByte(BigNum& number, std::uint32_t index, std::uint8_t value)
{
    if (number.count <= 0 || index / 8 >= static_cast<std::uint32_t>(number.count)) return BN_E_RANGE;
    std::uint64_t& limb = number.limbs[index / 8];
    const std::uint32_t shift = index % 8 * 8;
    limb = (limb & ~(std::uint64_t{0xFF} << shift)) | std::uint64_t{value} << shift;
    return STATUS_OK;
}

std::uint32_t bnImportPrefixed(BigNum& destination, const std::uint8_t* bytes, std::uint32_t size)
{
    if (size < 2) return 0;
    const std::uint32_t magnitude = bytesOf(load16be(bytes));
    if (size == 2) {
        if (magnitude != 0) return 0;
        // Zero is read even when its limb cannot be had: the record is then empty, and zero all the same.
        (void)bnResize(destination, 0);
        return 2;
    }
    if (size - 2 < magnitude || bnImport(destination, bytes + 2, magnitude) != STATUS_OK) return 0;
    return magnitude + 2;
}

std::uint32_t bnExportPrefixed(std::uint8_t* output, std::uint32_t capacity, const BigNum& number)
{
    const std::uint32_t bits = bnBitLength(number);
    if (bits > prefixLimit) return 0;
    const std::uint32_t magnitude = bytesOf(bits);
    if (magnitude + 2 > capacity) return 0;
    store16be(output, static_cast<std::uint16_t>(bits));
    bnExport(output + 2, magnitude, number);
    return magnitude + 2;
}

bool bnImportPrefixedAt(BigNum& destination, const std::uint8_t* bytes, std::uint32_t size, std::uint32_t& offset)
{
    if (offset > size) return false;
    const std::uint32_t consumed = bnImportPrefixed(destination, bytes + offset, size - offset);
    offset += consumed;
    return consumed != 0;
}

bool bnExportPrefixedAt(std::uint8_t* output, std::uint32_t capacity, std::uint32_t& offset, const BigNum& number)
{
    if (offset > capacity) return false;
    const std::uint32_t written = bnExportPrefixed(output + offset, capacity - offset, number);
    offset += written;
    return written != 0;
}

std::uint32_t bnPrefixedSize(const BigNum& number)
{
    return bytesOf(bnBitLength(number)) + 2;
}

std::uint32_t bnDerLength(const BigNum& number)
{
    return bnBitLength(number) / 8 + 1;
}

Status bnRandom(BigNum& destination, std::uint32_t size)
{
    SecretBytes bytes(size);
    if (!bytes) return BN_E_MEMORY;
    for (std::uint32_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(runtimeRand());
    return bnImport(destination, bytes.data(), size);
}

} // namespace toolbelt
