#include "speed/inputs.h"

#include <cstring>

#include "crypto/encoding/base64.h"
#include "speed/job.h"

namespace toolbelt::speed {

Bytes pattern(std::uint32_t size, std::uint32_t seed)
{
    Bytes bytes(size);
    std::uint32_t state = seed * 2654435761u | 1; // xorshift32 (Marsaglia)
    for (std::uint8_t& byte : bytes) {
        state ^= state << 13, state ^= state >> 17, state ^= state << 5;
        byte = static_cast<std::uint8_t>(state >> 11);
    }
    return bytes;
}

Bytes decode(const char* text)
{
    const auto length = static_cast<std::uint32_t>(std::strlen(text));
    Bytes bytes(length);
    std::uint32_t size = length;
    check(base64Decode(bytes.data(), &size, text, length), "base64 failed");
    bytes.resize(size);
    return bytes;
}

} // namespace toolbelt::speed
