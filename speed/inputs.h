// What the jobs work on: the same bytes and keys in every run.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace toolbelt::speed {

using Bytes = std::vector<std::uint8_t>;

inline std::uint32_t size32(const Bytes& bytes)
{
    return static_cast<std::uint32_t>(bytes.size());
}

// Bytes without a visible order, the same for the same seed.
Bytes pattern(std::uint32_t size, std::uint32_t seed = 1);

// Base64 of RSAPrivateKey (RFC 8017), of the traditional DSA private key with a q of 160 bits, and of a self-signed
// certificate with an RSA key of 2048 bits and SHA-256.
extern const char RSA_1024_KEY[], RSA_2048_KEY[], RSA_4096_KEY[], DSA_1024_KEY[], CERTIFICATE[];
// The DER.
Bytes decode(const char* text);

} // namespace toolbelt::speed
