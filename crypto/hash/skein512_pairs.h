// Skein-512 on vector registers, which hold 64-bit words whole where the general ones of 32-bit code do not. For the
// files of its tiers alone: each compiles it with flags of its own and brings along ROTATED, the rotation by an amount
// for each word; everything here belongs to the file that includes it.
//
// Two words lie in a register, so that a round is the same for both: words 0 and 4, 2 and 6 in two registers and 1 and
// 5, 3 and 7 in two others. Of the three ways in which the partners change between rounds, one exchanges the two halves
// of the registers of odd words, and one exchanges these registers, which costs nothing. (Only AVX2 rotates the halves
// of a register by different amounts.)
#pragma once

#include "crypto/base/dead_stack.h"
#include "crypto/hash/skein512.h"
#include "crypto/hash/threefish512.h"
#include "crypto/hash/unroll.h"

namespace toolbelt {
namespace {

using Pair = std::uint64_t __attribute__((vector_size(16)));
struct [[gnu::packed, gnu::may_alias]] PairInMemory
{
    Pair pair;
};

// Amounts of the rotations to the left and, for the same, to the right, and the numbers of the subkeys: read from
// memory as they are used, since eight registers are few.
struct Constants
{
    Pair left[8][2], right[8][2], number[THREEFISH_SUBKEYS];
};
constexpr Constants constants = [] {
    Constants c = {};
    for (std::uint32_t round = 0; round < 8; ++round)
        for (std::uint32_t i = 0; i < 2; ++i) {
            // The first even word has the first partner in the first of four rounds, the last one in the second, ...
            const auto& R = THREEFISH_ROTATIONS[round];
            const std::uint64_t low = R[(i + 4 - round % 4) % 4], high = R[(i + 6 - round % 4) % 4];
            c.left[round][i] = Pair{low, high};
            c.right[round][i] = Pair{64 - low, 64 - high};
        }
    for (std::uint32_t s = 0; s < THREEFISH_SUBKEYS; ++s) c.number[s] = Pair{0, s};
    return c;
}();

struct Words
{
    Pair even[2], odd[2];
};

// Key and tweak as the subkeys want them: keys[i] holds words i and i + 4 of the key with its parity word, which goes
// round after nine; what the tweak adds to words 5 and 6 is always in the high half.
struct Schedule
{
    Pair keys[9], tweak[3];
};

[[gnu::always_inline]] inline void makeSchedule(Schedule& schedule, const Skein512State& state)
{
    std::uint64_t words[13], parity = THREEFISH_PARITY;
    for (std::uint32_t i = 0; i < 8; ++i) parity ^= words[i] = state.chain[i];
    words[8] = parity;
    for (std::uint32_t i = 9; i < 13; ++i) words[i] = words[i - 9];
    for (std::uint32_t i = 0; i < 9; ++i) schedule.keys[i] = Pair{words[i], words[i + 4]};
    schedule.tweak[0] = Pair{0, state.position};
    schedule.tweak[1] = Pair{0, state.flags};
    schedule.tweak[2] = Pair{0, state.position ^ state.flags};
}

template <std::uint32_t S>
[[gnu::always_inline]] inline void addSubkey(Words& x, const Schedule& schedule, const Constants& c)
{
    x.even[0] += schedule.keys[S % 9];
    x.odd[0] += schedule.keys[(S + 1) % 9] + schedule.tweak[S % 3];
    x.even[1] += schedule.keys[(S + 2) % 9] + schedule.tweak[(S + 1) % 3];
    x.odd[1] += schedule.keys[(S + 3) % 9] + c.number[S];
}

[[gnu::always_inline]] inline void exchangeHalves(Pair& x)
{
    x = __builtin_shufflevector(x, x, 1, 0);
}

// A round, and what brings the partners of the next one together. After four rounds each word is where it was.
template <std::uint32_t ROUND, auto ROTATED>
[[gnu::always_inline]] inline void applyRound(Words& x, const Constants& c)
{
    unroll<2>([&]<std::uint32_t I>() __attribute__((always_inline)) {
        Pair &even = x.even[I], &odd = x.odd[(I + ROUND) % 2];
        even += odd;
        odd = ROTATED(odd, c.left[ROUND][I], c.right[ROUND][I]) ^ even;
        if constexpr (ROUND % 2 != 0) exchangeHalves(odd);
    });
}

template <auto ROTATED>
[[gnu::noinline]] void takeBlocks(Skein512State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    for (; count != 0; --count, blocks += 64) {
        state.position += 64;
        Schedule schedule;
        makeSchedule(schedule, state);
        const Constants* c = &constants;
        __asm__("" : "+r"(c)); // opaque, or they would be copied to the stack first
        const auto* const m = reinterpret_cast<const PairInMemory*>(blocks);
        const auto low = [](Pair a, Pair b) { return __builtin_shufflevector(a, b, 0, 2); };
        const auto high = [](Pair a, Pair b) { return __builtin_shufflevector(a, b, 1, 3); };
        Words x = {{low(m[0].pair, m[2].pair), low(m[1].pair, m[3].pair)},
                   {high(m[0].pair, m[2].pair), high(m[1].pair, m[3].pair)}};
        unroll<THREEFISH_SUBKEYS - 1>([&]<std::uint32_t S>() __attribute__((always_inline)) {
            addSubkey<S>(x, schedule, *c);
            constexpr std::uint32_t FIRST = S % 2 * 4;
            applyRound<FIRST, ROTATED>(x, *c);
            applyRound<FIRST + 1, ROTATED>(x, *c);
            applyRound<FIRST + 2, ROTATED>(x, *c);
            applyRound<FIRST + 3, ROTATED>(x, *c);
        });
        addSubkey<THREEFISH_SUBKEYS - 1>(x, schedule, *c);
        auto* const chain = reinterpret_cast<PairInMemory*>(state.chain.data());
        chain[0].pair = low(x.even[0], x.odd[0]) ^ m[0].pair;
        chain[1].pair = low(x.even[1], x.odd[1]) ^ m[1].pair;
        chain[2].pair = high(x.even[0], x.odd[0]) ^ m[2].pair;
        chain[3].pair = high(x.even[1], x.odd[1]) ^ m[3].pair;
        state.flags &= ~SKEIN_FLAG_FIRST;
    }
}

// The whole of a routine of a tier.
template <auto ROTATED>
[[gnu::always_inline]] inline void compressPairs(Skein512State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    takeBlocks<ROTATED>(state, blocks, count);
    wipeDeadStack();
}

} // namespace
} // namespace toolbelt
