// What the file of one cipher is made of: the owner of its key schedule, the padded key, the loop over the blocks, and
// the class over two functions of one block. IDEA, Blowfish and Rijndael have more to choose from in both directions,
// and classes of their own.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

#include "crypto/base/heap.h"
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

// Calls transform(from, to) for each block. A transform reads its whole block before it writes, so in and out may be
// the same buffer. The leading blocks go to a wide twin, if there is one, with its keys.
template <std::uint32_t BLOCK_SIZE, typename Transform>
Status forEachBlock(const std::uint8_t* in, std::uint8_t* out, std::int32_t length, Transform transform,
                    WideBlocks* wide = nullptr, const void* keys = nullptr)
{
    if (length < 0 || static_cast<std::uint32_t>(length) % BLOCK_SIZE != 0) return CRYPT_E_BAD_LENGTH;
    const std::uint32_t done =
        wide ? wide(keys, in, out, static_cast<std::uint32_t>(length) / BLOCK_SIZE) * BLOCK_SIZE : 0;
    for (std::uint32_t at = done; at < static_cast<std::uint32_t>(length); at += BLOCK_SIZE)
        transform(in + at, out + at);
    return CRYPT_OK;
}

// A cipher that works block by block: its members are functions of one block. What getSizes reports as the key size is
// given when the object is made; 0 where a cipher keeps no length. A cipher with a wide twin overrides decryptBlocks.
template <std::uint32_t BLOCK_SIZE, typename Schedule, auto ENCRYPT_BLOCK, auto DECRYPT_BLOCK>
class BlockCipher : public cSymAlg
{
public:
    explicit BlockCipher(std::uint32_t reportedKeySize) noexcept : keySize_(reportedKeySize) {}
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
    std::uint32_t keySize_;
};

// For the ciphers with a row and a class for each of three lengths: the class says which row was asked for, the key's
// own length decides the schedule.
template <typename Cipher, auto EXPAND_KEY>
cSymAlg* createOfThreeLengths(const std::uint8_t* key, std::uint32_t keyLength)
{
    if (key == nullptr || (keyLength != 16 && keyLength != 24 && keyLength != 32)) return nullptr;
    auto cipher = newCipher<Cipher>(keyLength);
    if (cipher) EXPAND_KEY(*cipher->schedule, key, keyLength);
    return cipher.release();
}

} // namespace toolbelt
