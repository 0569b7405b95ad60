// Numbers as bytes: prefixed ones one after another, and what is asked of a number, against its bytes.
#include "fuzz/natural.h"

namespace toolbelt::fuzz {
namespace {

void ask(const BigNum& number, const Bytes& bytes, std::uint32_t index)
{
    const Bytes value = trimmed(bytes);
    const std::uint32_t bits = bitLength(value), size = sizeOf(value);
    require(valueOf(number) == value && bnBitLength(number) == bits, "the value");
    require(bnPrefixedSize(number) == (bits + 7) / 8 + 2 && bnDerLength(number) == bits / 8 + 1, "its sizes");
    require(bnTopLimb(number) == static_cast<std::int32_t>(bits == 0 ? 0 : (bits - 1) / 64), "its top limb");
    const std::uint8_t expected = index < size ? value[size - 1 - index] : 0;
    require(bnGetByte(number, index) == expected, "a byte");
    require(bnTestBit(number, 8 * index + 3) == (expected >> 3 & 1), "a bit");
    Bytes wide(index);
    bnExport(wide.data(), index, number);
    for (std::uint32_t i = 0; i < index; ++i)
        require(wide[index - 1 - i] == (i < size ? value[size - 1 - i] : 0), "a fixed width");
    const Bytes canonical = prefixed(value);
    Bytes output(canonical.size());
    require(bnExportPrefixed(output.data(), sizeOf(output), number) == canonical.size() && output == canonical &&
                bnExportPrefixed(output.data(), sizeOf(output) - 1, number) == 0,
            "the prefixed form");
}

const Target target("number", [](Input input) {
    const std::uint32_t index = input.byte();
    const Bytes bytes = input.take(4096);
    std::uint32_t offset = 0, at = 0, length = sizeOf(bytes);
    BigNum number;
    for (int i = 0; i < 64; ++i) {
        const std::uint32_t left = length - at;
        const std::uint32_t bits = left >= 2 ? bytes[at] * 256u + bytes[at + 1] : 0, size = (bits + 7) / 8;
        const bool fits = left > 2 ? left >= size + 2 : left == 2 && bits == 0;
        require(bnImportPrefixedAt(number, addressOf(bytes), length, offset) == fits, "a number fits or does not");
        require(offset == at + (fits ? size + 2 : 0), "the offset moves behind it");
        if (!fits) break;
        ask(number, Bytes(addressOf(bytes) + at + 2, addressOf(bytes) + offset), index);
        at = offset;
    }
    BigNum borrowed, owner;
    load(owner, bytes);
    require(bnView(borrowed, owner, 0, 2) == STATUS_OK && borrowed.count <= 2, "a view");
    const bool imported = bnImportPrefixed(borrowed, addressOf(bytes), length) != 0;
    require(borrowed.count <= 2, "a view never grows");
    if (imported)
        ask(borrowed, Bytes(addressOf(bytes) + 2, addressOf(bytes) + 2 + (bytes[0] * 256u + bytes[1] + 7) / 8), index);
});

} // namespace
} // namespace toolbelt::fuzz
