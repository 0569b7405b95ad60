// What the file of one cipher is made of: the owner of its key schedule, the padded key, the loops over the blocks, and
// the class over two functions of one block. Blowfish and Rijndael have more to choose from in both directions, and
// classes of their own.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

#include "crypto/base/bytes.h"
#include "crypto/base/dead_stack.h"
#include "crypto/base/heap.h"
#include "crypto/cipher/chained_blocks.h"
#include "crypto/cipher/cipher.h"
#include "crypto/cipher/wide.h"

namespace toolbelt {

// ScheduleOwner: one pointer that owns a key schedule (plain values only) and wipes it before it is released. Null when
// the allocation failed. The contents start undefined.
template <typename Schedule>
class ScheduleOwner
{
    static_assert(std::is_trivially_copyable_v<Schedule> && std::is_trivially_destructible_v<Schedule>);

public:
    ScheduleOwner() noexcept
    {
        if (void* block = heap::allocate(sizeof(Schedule))) schedule_ = new (block) Schedule;
    }
    ~ScheduleOwner() { heap::releaseSecret(schedule_, sizeof(Schedule)); }
    ScheduleOwner(const ScheduleOwner&) = delete;
    ScheduleOwner& operator=(const ScheduleOwner&) = delete;

    explicit operator bool() const noexcept { return schedule_ != nullptr; }
    Schedule& operator*() const noexcept { return *schedule_; }
    Schedule* operator->() const noexcept { return schedule_; }

private:
    Schedule* schedule_ = nullptr;
};

// A new cipher object whose public member `schedule` could be allocated, or null.
template <typename Cipher, typename... Arguments>
std::unique_ptr<Cipher> newCipher(Arguments... arguments) noexcept
{
    std::unique_ptr<Cipher> cipher(new (std::nothrow) Cipher(arguments...));
    if (cipher && !cipher->schedule) cipher.reset();
    return cipher;
}

// PaddedKey: the leading SIZE bytes of a key; a shorter one is filled up with zeros. False when there is no key where
// its length says that there is one.
template <std::uint32_t SIZE>
class PaddedKey
{
public:
    PaddedKey(const std::uint8_t* key, std::uint32_t keyLength) noexcept : given_(key != nullptr || keyLength == 0)
    {
        if (key && keyLength) std::memcpy(bytes_, key, std::min(keyLength, SIZE));
    }
    ~PaddedKey() { wipe(bytes_, SIZE); }
    PaddedKey(const PaddedKey&) = delete;
    PaddedKey& operator=(const PaddedKey&) = delete;

    explicit operator bool() const noexcept { return given_; }
    const std::uint8_t* data() const noexcept { return bytes_; }

private:
    std::uint8_t bytes_[SIZE] = {};
    bool given_;
};

// Not inlined: what the transform puts by lies where the caller wipes.
template <std::uint32_t BLOCK_SIZE, typename Transform>
[[gnu::noinline]] void transformEach(const std::uint8_t* in, std::uint8_t* out, std::uint32_t length,
                                     Transform transform)
{
    for (std::uint32_t at = 0; at < length; at += BLOCK_SIZE) transform(in + at, out + at);
}

// Calls transform(from, to) for each block. A transform reads its whole block before it writes, so in and out may be
// the same buffer. The leading blocks go to a wide twin, if there is one, with its keys.
template <std::uint32_t BLOCK_SIZE, typename Transform>
Status forEachBlock(const std::uint8_t* in, std::uint8_t* out, std::int32_t length, Transform transform,
                    WideBlocks* wide = nullptr, const void* keys = nullptr)
{
    const auto size = static_cast<std::uint32_t>(length);
    if (length < 0 || size % BLOCK_SIZE != 0) return CRYPT_E_BAD_LENGTH;
    const std::uint32_t done = wide ? wide(keys, in, out, size / BLOCK_SIZE) * BLOCK_SIZE : 0;
    if (done != size) {
        transformEach<BLOCK_SIZE>(in + done, out + done, size - done, transform);
        wipeShallowStack();
    }
    return CRYPT_OK;
}

// of(offset) for each 32-bit word of a block.
template <std::uint32_t BLOCK_SIZE, typename Of>
[[gnu::always_inline]] inline void forEachWord(Of of)
{
#pragma GCC unroll 4
    for (std::uint32_t offset = 0; offset < BLOCK_SIZE; offset += 4) of(offset);
}

// Encrypts whole blocks in a chaining mode, with the chain in registers: through memory, each block would wait for what
// the one before it stored. transform is to read and write a block in 32-bit words, or it lies in memory after all.
// Not inlined, like transformEach.
template <Chain CHAIN, std::uint32_t BLOCK_SIZE, typename Transform>
[[gnu::noinline, gnu::flatten]] void encryptChained(std::uint8_t* chain, const std::uint8_t* in, std::uint8_t* out,
                                                    std::uint32_t blocks, Transform transform)
{
    alignas(std::uint32_t) std::uint8_t block[BLOCK_SIZE]; // ciphertext before and after the loop
    const auto take = [&block](const std::uint8_t* from) {
        forEachWord<BLOCK_SIZE>([&](auto at) { store32le(block + at, load32le(from + at)); });
    };
    const auto add = [&block](const std::uint8_t* from) {
        forEachWord<BLOCK_SIZE>([&](auto at) { store32le(block + at, load32le(block + at) ^ load32le(from + at)); });
    };
    const auto give = [&block](std::uint8_t* to) {
        forEachWord<BLOCK_SIZE>([&](auto at) { store32le(to + at, load32le(block + at)); });
    };
    take(chain);
    for (; blocks != 0; --blocks, in += BLOCK_SIZE, out += BLOCK_SIZE) {
        if constexpr (CHAIN == Chain::CBC) add(in);
        transform(block, block);
        if constexpr (CHAIN == Chain::CFB) add(in);
        give(out);
    }
    give(chain);
}

// A cipher that works block by block: its members are functions of one block. What getSizes reports as the key size is
// given when the object is made; 0 where a cipher keeps no length. A cipher with a wide twin overrides decryptBlocks.
template <std::uint32_t BLOCK_SIZE, typename Schedule, auto ENCRYPT_BLOCK, auto DECRYPT_BLOCK>
class BlockCipher : public cSymAlg
{
public:
    explicit BlockCipher(std::uint32_t reportedKeySize) noexcept : keySize_(reportedKeySize)
    {
        static constexpr ChainedBlocks chained = {chainBlocks<Chain::CBC>, nullptr, chainBlocks<Chain::CFB>, nullptr};
        chainedBlocks_ = &chained;
    }
    std::uint32_t getSizes(std::uint32_t* blockSize, std::uint32_t* keySize) const override
    {
        *blockSize = BLOCK_SIZE;
        *keySize = keySize_;
        return 1;
    }
    Status encryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return forEachBlock<BLOCK_SIZE>(in, out, length,
                                        [&key = *schedule](auto from, auto to) { ENCRYPT_BLOCK(key, from, to); });
    }
    Status decryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return decryptWith(nullptr, nullptr, in, out, length);
    }

    ScheduleOwner<Schedule> schedule;

protected:
    Status decryptWith(WideBlocks* wide, const void* keys, const std::uint8_t* in, std::uint8_t* out,
                       std::int32_t length)
    {
        return forEachBlock<BLOCK_SIZE>(
            in, out, length, [&key = *schedule](auto from, auto to) { DECRYPT_BLOCK(key, from, to); }, wide, keys);
    }

private:
    template <Chain CHAIN>
    static void chainBlocks(const cSymAlg& self, std::uint8_t* chain, const std::uint8_t* in, std::uint8_t* out,
                            std::uint32_t blocks)
    {
        const Schedule& key = *static_cast<const BlockCipher&>(self).schedule;
        encryptChained<CHAIN, BLOCK_SIZE>(chain, in, out, blocks,
                                          [&key](auto from, auto to) { ENCRYPT_BLOCK(key, from, to); });
        wipeShallowStack();
    }

    std::uint32_t keySize_;
};

// For the ciphers with a row and a class for each of three lengths: the class says which row was asked for, the key's
// own length decides the schedule. EXPAND_KEY is not to be inlined: what it puts by is wiped behind it.
template <typename Cipher, auto EXPAND_KEY>
cSymAlg* createOfThreeLengths(const std::uint8_t* key, std::uint32_t keyLength)
{
    if (key == nullptr || (keyLength != 16 && keyLength != 24 && keyLength != 32)) return nullptr;
    auto cipher = newCipher<Cipher>(keyLength);
    if (cipher) EXPAND_KEY(*cipher->schedule, key, keyLength), wipeShallowStack();
    return cipher.release();
}

} // namespace toolbelt
