// The shape of an element by the reader's rules, written anew and as short as it goes.
#pragma once

#include "crypto/encoding/der.h"
#include "fuzz/target.h"

namespace toolbelt::fuzz {

struct Shape
{
    Status status = STATUS_OK;
    std::uint32_t header = 0, content = 0;
    bool indefinite = false;
    std::uint32_t total() const { return header + content; }
};

inline Shape shapeOf(const std::uint8_t* data, std::uint32_t available, std::uint32_t depth = 0)
{
    if (available < 2) return {DER_E_LENGTH};
    const std::uint32_t octet = data[1], count = octet > 0x80 ? octet - 0x80 : 0;
    if (count > 4) return {DER_E_MALFORMED};
    if (octet == 0x80) {
        if (depth == DER_MAX_INDEFINITE_DEPTH) return {DER_E_MALFORMED};
        for (std::uint32_t at = 2;;) {
            const Shape inner = shapeOf(data + at, available - at, depth + 1);
            if (inner.status != STATUS_OK) return {inner.status};
            const bool last = data[at] == 0;
            at += inner.total();
            if (last) return {STATUS_OK, 2, at - 2, true};
        }
    }
    std::uint64_t length = octet < 0x80 ? octet : 0;
    if (available < 2 + count) return {DER_E_LENGTH};
    for (std::uint32_t i = 0; i < count; ++i) length = length << 8 | data[2 + i];
    if (2 + count + length > available) return {DER_E_LENGTH};
    return {STATUS_OK, 2 + count, static_cast<std::uint32_t>(length), false};
}

} // namespace toolbelt::fuzz
