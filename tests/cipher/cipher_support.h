// What the cipher suites share: owned objects and bytes that look random.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "tests/cipher/chaining_model.h"
#include "tests/support/tiers.h"
#include "tests/support/vectors.h"

namespace toolbelt::test {

using Cipher = std::unique_ptr<cSymAlg>;

inline const CipherRow& rowOf(std::int32_t id)
{
    const CipherRow* row = nullptr;
    if (findCipher(&row, id) != CRYPT_OK) throw std::runtime_error("no cipher " + std::to_string(id));
    return *row;
}

inline Cipher makeCipher(std::int32_t id, const Bytes& key)
{
    return Cipher(rowOf(id).create(key.data(), static_cast<std::uint32_t>(key.size())));
}

inline Bytes randomBytes(std::size_t size, std::uint32_t seed)
{
    std::mt19937 random(seed);
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

inline std::int32_t lengthOf(const Bytes& bytes)
{
    return static_cast<std::int32_t>(bytes.size());
}

inline Bytes ecb(cSymAlg& cipher, bool encrypt, const Bytes& in)
{
    Bytes out(in.size());
    EXPECT_EQ(encrypt ? cipher.encryptBlocks(in.data(), out.data(), lengthOf(in))
                      : cipher.decryptBlocks(in.data(), out.data(), lengthOf(in)),
              CRYPT_OK);
    return out;
}

inline Bytes chained(cSymAlg& cipher, bool encrypt, const Bytes& iv, const Bytes& in)
{
    Bytes out(in.size());
    const auto mode = encrypt ? cipher.modeEncrypt : cipher.modeDecrypt;
    EXPECT_EQ(mode(&cipher, iv.empty() ? nullptr : iv.data(), in.data(), out.data(), lengthOf(in)), CRYPT_OK);
    return out;
}

} // namespace toolbelt::test
