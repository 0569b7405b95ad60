// The text of a cipher's rounds over Words<N>: the same word of N blocks that do not wait for each other. A round looks
// tables up and waits for the round before it; with a few blocks side by side the processor has other work meanwhile.
// With N = 1 it is the cipher as its standard has it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "crypto/base/dead_stack.h"
#include "crypto/cipher/member.h"

namespace toolbelt {

// How many blocks: of two to six, four was the fastest for most (Zen 3, 32 bits); the words of more lie in memory.
inline constexpr std::uint32_t SIDE = 4;

template <std::uint32_t N>
struct Words
{
    std::uint32_t at[N];

    // of(i) for each block.
    template <typename Of>
    [[gnu::always_inline]] static Words each(Of of)
    {
        return eachOf(of, std::make_index_sequence<N>());
    }

    Words() = default;
    [[gnu::always_inline]] Words(std::uint32_t same) : Words(each([=](std::size_t) { return same; })) {}

    [[gnu::always_inline]] friend Words operator^(Words a, Words b)
    {
        return each([&](std::size_t i) { return a.at[i] ^ b.at[i]; });
    }
    [[gnu::always_inline]] friend Words operator&(Words a, Words b)
    {
        return each([&](std::size_t i) { return a.at[i] & b.at[i]; });
    }
    [[gnu::always_inline]] friend Words operator+(Words a, Words b)
    {
        return each([&](std::size_t i) { return a.at[i] + b.at[i]; });
    }
    [[gnu::always_inline]] friend Words operator-(Words a, Words b)
    {
        return each([&](std::size_t i) { return a.at[i] - b.at[i]; });
    }
    [[gnu::always_inline]] friend Words operator<<(Words a, int by)
    {
        return each([&](std::size_t i) { return a.at[i] << by; });
    }
    [[gnu::always_inline]] friend Words operator>>(Words a, int by)
    {
        return each([&](std::size_t i) { return a.at[i] >> by; });
    }
    [[gnu::always_inline]] friend Words rotl(Words a, int by)
    {
        return each([&](std::size_t i) { return std::rotl(a.at[i], by); });
    }
    [[gnu::always_inline]] friend Words rotr(Words a, int by)
    {
        return each([&](std::size_t i) { return std::rotr(a.at[i], by); });
    }
    [[gnu::always_inline]] friend Words& operator^=(Words& a, Words b) { return a = a ^ b; }

private:
    template <typename Of, std::size_t... I>
    [[gnu::always_inline]] static Words eachOf(Of of, std::index_sequence<I...>)
    {
        Words words;
        ((words.at[I] = of(I)), ...);
        return words;
    }
};

template <typename Table, std::uint32_t N>
[[gnu::always_inline]] inline Words<N> look(const Table& table, Words<N> at)
{
    return Words<N>::each([&](std::size_t i) -> std::uint32_t { return table[at.at[i]]; });
}

// The word of each of N blocks, blockSize bytes apart; LOAD and STORE are load32be and store32be or the like.
template <auto LOAD, std::uint32_t N>
[[gnu::always_inline]] inline Words<N> loadWords(const std::uint8_t* from, std::uint32_t blockSize)
{
    return Words<N>::each([=](std::size_t i) { return LOAD(from + i * blockSize); });
}
template <auto STORE, std::uint32_t N>
[[gnu::always_inline]] inline void storeWords(std::uint8_t* to, std::uint32_t blockSize, const Words<N>& words)
{
    for (std::uint32_t i = 0; i < N; ++i) STORE(to + i * blockSize, words.at[i]);
}

// Calls transform(from, to) for each SIDE blocks, and returns how many blocks that were. Not inlined: what the
// transform puts by lies where its caller wipes.
template <std::uint32_t BLOCK_SIZE, typename Transform>
[[gnu::noinline]] std::uint32_t forEachGroup(const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks,
                                             Transform transform)
{
    const std::uint32_t taken = blocks / SIDE * SIDE;
    for (std::uint32_t at = 0; at < taken * BLOCK_SIZE; at += SIDE * BLOCK_SIZE) transform(in + at, out + at);
    return taken;
}

// Transforms the blocks in groups of SIDE, and the rest one by one. A group is read before it is written, so in and out
// may be the same buffer.
template <std::uint32_t BLOCK_SIZE, typename Block, typename Group>
Status transformBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length, Block block, Group group)
{
    constexpr auto SIZE = static_cast<std::int32_t>(BLOCK_SIZE);
    std::int32_t done = 0;
    if (length >= SIZE * static_cast<std::int32_t>(SIDE) && length % SIZE == 0) {
        const auto blocks = static_cast<std::uint32_t>(length / SIZE);
        done = SIZE * static_cast<std::int32_t>(forEachGroup<BLOCK_SIZE>(in, out, blocks, group));
        wipeDeadStack();
    }
    return forEachBlock<BLOCK_SIZE>(in + done, out + done, length - done, block);
}

// A cipher whose members are functions of one block, and of SIDE blocks.
template <std::uint32_t BLOCK_SIZE, typename Schedule, auto ENCRYPT_BLOCK, auto ENCRYPT_GROUP, auto DECRYPT_BLOCK,
          auto DECRYPT_GROUP>
class SideBySideCipher : public BlockCipher<BLOCK_SIZE, Schedule, ENCRYPT_BLOCK, DECRYPT_BLOCK>
{
public:
    using BlockCipher<BLOCK_SIZE, Schedule, ENCRYPT_BLOCK, DECRYPT_BLOCK>::BlockCipher;
    Status encryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return transform<ENCRYPT_BLOCK, ENCRYPT_GROUP>(in, out, length);
    }
    Status decryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return transform<DECRYPT_BLOCK, DECRYPT_GROUP>(in, out, length);
    }

private:
    template <auto BLOCK, auto GROUP>
    Status transform(const std::uint8_t* in, std::uint8_t* out, std::int32_t length)
    {
        const Schedule& key = *this->schedule;
        return transformBlocks<BLOCK_SIZE>(
            in, out, length, [&key](auto from, auto to) { BLOCK(key, from, to); },
            [&key](auto from, auto to) { GROUP(key, from, to); });
    }
};

} // namespace toolbelt
