// BlockBuffer: what the block-based digests share. A member supplies a state and a routine that takes in whole blocks;
// here the message is cut into blocks, whatever the lengths in which it arrives, and padded at its end.
//
// The first `used` bytes of the block wait for more. Whole blocks go to the routine straight from the caller's memory,
// as many at a time as there are, so data may have any alignment.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace toolbelt {

template <typename State, std::uint32_t BLOCK>
struct BlockBuffer
{
    State state;
    std::uint32_t used;
    std::uint8_t block[BLOCK];
};

// What a member's length counter counts; the value is the units in a byte.
enum class CountUnit : std::uint32_t
{
    BYTES = 1,
    BITS = 8,
};

// A buffer that also counts the length of the message so far, modulo 2^64: in 32-bit code two words, the carry going
// from the low to the high one.
template <typename State, std::uint32_t BLOCK, CountUnit UNIT>
struct CountedBuffer : BlockBuffer<State, BLOCK>
{
    std::uint64_t counter;
};

// Takes count whole blocks into the state. Such a routine is all that a faster code path has to replace.
template <typename State>
using Compress = void(State& state, const std::uint8_t* blocks, std::uint32_t count);

// The context of a digest whose routine depends on the processor. The routine is chosen before the first reset, when
// the object is built, and a reset keeps it: every other routine of the context calls it.
template <typename Buffer>
struct TieredBuffer : Buffer
{
    Compress<decltype(Buffer::state)>* compress;
};

// What becomes of a block that is full while no byte behind it has come yet.
enum class FullBlock
{
    COMPRESS,
    HOLD, // for a member that treats its last block differently
};

// Takes in length bytes; data may be null when length is 0.
template <typename State, std::uint32_t BLOCK>
void absorb(BlockBuffer<State, BLOCK>& buffer, const std::uint8_t* data, std::uint32_t length,
            Compress<State>* compress, FullBlock full = FullBlock::COMPRESS)
{
    if (length == 0) return;
    const std::uint32_t behind = full == FullBlock::HOLD ? 1 : 0; // bytes that must follow a block
    if (buffer.used != 0) {
        const std::uint32_t taken = std::min(BLOCK - buffer.used, length);
        std::memcpy(buffer.block + buffer.used, data, taken);
        buffer.used += taken;
        data += taken;
        length -= taken;
        if (buffer.used < BLOCK || length < behind) return;
        compress(buffer.state, buffer.block, 1);
        buffer.used = 0;
    }
    // Here length >= behind: it is not 0 any more where a byte must follow.
    const std::uint32_t blocks = (length - behind) / BLOCK;
    if (blocks != 0) {
        compress(buffer.state, data, blocks);
        data += blocks * BLOCK;
        length -= blocks * BLOCK;
    }
    if (length != 0) std::memcpy(buffer.block, data, length);
    buffer.used = length;
}

// Begins a message.
template <typename State, std::uint32_t BLOCK, CountUnit UNIT>
void start(CountedBuffer<State, BLOCK, UNIT>& buffer, const State& state)
{
    buffer.state = state;
    buffer.used = 0;
    buffer.counter = 0;
}

// absorb, and counts.
template <typename State, std::uint32_t BLOCK, CountUnit UNIT>
void countAndAbsorb(CountedBuffer<State, BLOCK, UNIT>& buffer, const std::uint8_t* data, std::uint32_t length,
                    Compress<State>* compress)
{
    buffer.counter += std::uint64_t(length) * static_cast<std::uint32_t>(UNIT);
    absorb(buffer, data, length, compress);
}

// Ends the message: the byte 0x80, zeros, and the encoded length as the last bytes of a block. A block that has no room
// for the length behind the 0x80 is filled with zeros and another one follows. Not for a buffer that holds full blocks.
template <typename State, std::uint32_t BLOCK, std::uint32_t LENGTH_SIZE>
void pad(BlockBuffer<State, BLOCK>& buffer, const std::uint8_t (&length)[LENGTH_SIZE], Compress<State>* compress)
{
    buffer.block[buffer.used++] = 0x80;
    if (buffer.used > BLOCK - LENGTH_SIZE) {
        std::memset(buffer.block + buffer.used, 0, BLOCK - buffer.used);
        compress(buffer.state, buffer.block, 1);
        buffer.used = 0;
    }
    std::memset(buffer.block + buffer.used, 0, BLOCK - LENGTH_SIZE - buffer.used);
    std::memcpy(buffer.block + BLOCK - LENGTH_SIZE, length, LENGTH_SIZE);
    compress(buffer.state, buffer.block, 1);
}

} // namespace toolbelt
