// Skein-512: unique block iteration (UBI) over the tweakable block cipher Threefish-512; little-endian throughout.
// Three UBI passes make a digest: configuration (done by the compiler), message, output.
#include "crypto/hash/skein512.h"

#include <bit>

#include "crypto/base/bytes.h"
#include "crypto/base/cpu.h"
#include "crypto/hash/threefish512.h"

namespace toolbelt {
namespace {

using Words = std::array<std::uint64_t, 8>;

constexpr std::uint64_t FLAG_FINAL = 1ull << 63;
constexpr std::uint64_t TYPE_CONFIG = 4ull << 56;
constexpr std::uint64_t TYPE_MESSAGE = 48ull << 56;
constexpr std::uint64_t TYPE_OUTPUT = 63ull << 56;

constexpr std::uint32_t SUBKEYS = THREEFISH_SUBKEYS;

// Key and tweak, each with its parity word and repeated, so that subkey s begins at word s.
struct Schedule
{
    std::uint64_t key[SUBKEYS + 7];
    std::uint64_t tweak[SUBKEYS + 1];
};

constexpr void makeSchedule(Schedule& schedule, const Skein512State& state)
{
    std::uint64_t parity = THREEFISH_PARITY;
    for (std::uint32_t i = 0; i < 8; ++i) parity ^= schedule.key[i] = state.chain[i];
    schedule.key[8] = parity;
    for (std::uint32_t i = 9; i < SUBKEYS + 7; ++i) schedule.key[i] = schedule.key[i - 9];
    schedule.tweak[0] = state.position;
    schedule.tweak[1] = state.flags;
    schedule.tweak[2] = state.position ^ state.flags;
    for (std::uint32_t i = 3; i < SUBKEYS + 1; ++i) schedule.tweak[i] = schedule.tweak[i - 3];
}

constexpr void addSubkey(Words& x, const Schedule& schedule, std::uint32_t s)
{
    for (std::uint32_t i = 0; i < 8; ++i) x[i] += schedule.key[s + i];
    x[5] += schedule.tweak[s];
    x[6] += schedule.tweak[s + 1];
    x[7] += s;
}

template <int R>
[[gnu::always_inline]] constexpr void mix(std::uint64_t& a, std::uint64_t& b)
{
    a += b;
    b = std::rotl(b, R) ^ a;
}

// Four rounds. The words keep their places; the permutation between rounds is in the choice of the pairs, and after
// four rounds it is the identity.
template <std::uint32_t FIRST>
[[gnu::always_inline]] constexpr void fourRounds(Words& x)
{
    constexpr auto& R = THREEFISH_ROTATIONS;
    mix<R[FIRST][0]>(x[0], x[1]);
    mix<R[FIRST][1]>(x[2], x[3]);
    mix<R[FIRST][2]>(x[4], x[5]);
    mix<R[FIRST][3]>(x[6], x[7]);
    mix<R[FIRST + 1][0]>(x[2], x[1]);
    mix<R[FIRST + 1][1]>(x[4], x[7]);
    mix<R[FIRST + 1][2]>(x[6], x[5]);
    mix<R[FIRST + 1][3]>(x[0], x[3]);
    mix<R[FIRST + 2][0]>(x[4], x[1]);
    mix<R[FIRST + 2][1]>(x[6], x[3]);
    mix<R[FIRST + 2][2]>(x[0], x[5]);
    mix<R[FIRST + 2][3]>(x[2], x[7]);
    mix<R[FIRST + 3][0]>(x[6], x[1]);
    mix<R[FIRST + 3][1]>(x[0], x[7]);
    mix<R[FIRST + 3][2]>(x[2], x[5]);
    mix<R[FIRST + 3][3]>(x[4], x[3]);
}

struct Work
{
    Schedule schedule;
    Words message;
    Words x;
};

// One step of UBI: chain = Threefish(key chain, the tweak, work.message) ^ work.message; the next block is no first
// one.
constexpr void chainBlock(Skein512State& state, Work& work)
{
    makeSchedule(work.schedule, state);
    work.x = work.message;
    for (std::uint32_t s = 0; s < SUBKEYS - 1; s += 2) {
        addSubkey(work.x, work.schedule, s);
        fourRounds<0>(work.x);
        addSubkey(work.x, work.schedule, s + 1);
        fourRounds<4>(work.x);
    }
    addSubkey(work.x, work.schedule, SUBKEYS - 1);
    for (std::uint32_t i = 0; i < 8; ++i) state.chain[i] = work.x[i] ^ work.message[i];
    state.flags &= ~SKEIN_FLAG_FIRST;
}

// The chaining value behind the configuration block: "SHA3", version 1, and the length of the output in bits.
constexpr Words makeStart()
{
    Skein512State state = {{}, 32, TYPE_CONFIG | SKEIN_FLAG_FIRST | FLAG_FINAL};
    Work work = {};
    work.message = {0x0000000133414853, 512};
    chainBlock(state, work);
    return state.chain;
}
constexpr Words START = makeStart();

} // namespace

void skein512Compress(Skein512State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    Work work;
    const WipeOnExit wipeWork(work);
    for (; count != 0; --count, blocks += 64) {
        for (std::uint32_t i = 0; i < 8; ++i) work.message[i] = load64le(blocks + 8 * i);
        state.position += 64;
        chainBlock(state, work);
    }
}

// Compresses the block as the last of its kind, of which it brings `bytes` bytes.
static void compressLast(Skein512Context& context, std::uint32_t bytes)
{
    context.state.flags |= FLAG_FINAL;
    context.state.position += bytes - 64ull; // the routine counts whole blocks
    context.compress(context.state, context.block, 1);
}

void skein512Choose(Skein512Context* context)
{
    context->compress = cpu::has(cpu::AVX512) ? skein512CompressAvx512
                        : cpu::has(cpu::AVX2) ? skein512CompressAvx2
                                              : skein512Compress;
}

Status skein512Reset(Skein512Context* context)
{
    if (context == nullptr) return CRYPT_E_NULL_CONTEXT;
    context->state = {START, 0, TYPE_MESSAGE | SKEIN_FLAG_FIRST};
    context->used = 0;
    return CRYPT_OK;
}

Status skein512Update(Skein512Context* context, const std::uint8_t* data, std::uint32_t length)
{
    if (context == nullptr) return CRYPT_E_NULL_CONTEXT;
    absorb(*context, data, length, context->compress, FullBlock::HOLD);
    return CRYPT_OK;
}

Status skein512Final(Skein512Context* context, std::uint8_t* output)
{
    if (context == nullptr) return CRYPT_E_NULL_CONTEXT;
    Skein512State& state = context->state;
    std::memset(context->block + context->used, 0, 64 - context->used);
    compressLast(*context, context->used);

    // The output is one block: the number 0 in eight bytes, encrypted under the chaining value.
    std::memset(context->block, 0, 64);
    state.position = 0;
    state.flags = TYPE_OUTPUT | SKEIN_FLAG_FIRST;
    compressLast(*context, 8);
    for (std::uint32_t i = 0; i < 8; ++i) store64le(output + 8 * i, state.chain[i]);
    return CRYPT_OK;
}

} // namespace toolbelt
