// The form of numbers as bytes.
#include "fuzz/natural.h"

#include <algorithm>
#include <bit>

namespace toolbelt::fuzz {

Bytes trimmed(const Bytes& number)
{
    return Bytes(std::find_if(number.begin(), number.end(), [](std::uint8_t byte) { return byte != 0; }), number.end());
}

bool isLess(const Bytes& a, const Bytes& b)
{
    const Bytes left = trimmed(a), right = trimmed(b);
    return left.size() != right.size() ? left.size() < right.size() : left < right;
}

std::uint32_t bitLength(const Bytes& a)
{
    const Bytes number = trimmed(a);
    return number.empty() ? 0 : static_cast<std::uint32_t>(8 * number.size() - std::countl_zero(number.front()));
}

void load(BigNum& number, const Bytes& bytes)
{
    require(bnImport(number, addressOf(bytes), sizeOf(bytes)) == STATUS_OK, "a number is imported");
}

Bytes valueOf(const BigNum& number)
{
    Bytes bytes((bnBitLength(number) + 7) / 8);
    bnExport(bytes.data(), sizeOf(bytes), number);
    return bytes;
}

Bytes prefixed(const Bytes& number)
{
    Bytes bytes = trimmed(number);
    const std::uint32_t bits = bitLength(number);
    bytes.insert(bytes.begin(), {static_cast<std::uint8_t>(bits >> 8), static_cast<std::uint8_t>(bits)});
    return bytes;
}

} // namespace toolbelt::fuzz
