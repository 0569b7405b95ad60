// Shared by the digest tests: an owned digest object, and one call that hashes from exactly sized memory.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "crypto/hash/hash.h"
#include "tests/support/vectors.h"

namespace toolbelt::test {

inline constexpr std::int32_t KECCAK_ID = 0x82;

struct DestroyHash
{
    void operator()(cHashAlg* hash) const { destroyHash(hash); }
};
using Hash = std::unique_ptr<cHashAlg, DestroyHash>;

inline Hash makeHash(std::int32_t id)
{
    cHashAlg* hash = nullptr;
    if (createHash(&hash, id) != 0 || hash == nullptr) throw std::runtime_error("no digest of this id");
    return Hash(hash);
}

// Ends the message; the block for the digest has exactly its size, so that a longer output is noticed under ASan.
inline Bytes finish(cHashAlg& hash)
{
    const std::unique_ptr<std::uint8_t[]> output(new std::uint8_t[hash.getSize()]);
    EXPECT_EQ(hash.final(output.get()), 0);
    return Bytes(output.get(), output.get() + hash.getSize());
}

// One update from a block of exactly the message's size; no block for an empty one.
inline void updateExactly(cHashAlg& hash, const std::uint8_t* data, std::size_t size)
{
    const std::unique_ptr<std::uint8_t[]> block(size != 0 ? new std::uint8_t[size] : nullptr);
    std::copy_n(data, size, block.get());
    EXPECT_EQ(hash.update(block.get(), static_cast<std::uint32_t>(size)), 0);
    EXPECT_TRUE(std::equal(data, data + size, block.get())) << "the input was changed";
}

inline Bytes pattern(std::size_t size)
{
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i % 251);
    return bytes;
}

} // namespace toolbelt::test
