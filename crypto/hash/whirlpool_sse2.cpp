// Whirlpool with the rows that come out of the tables added up in vector registers, which hold 64 bits whole where the
// general registers of 32-bit code do not: compiled with flags of its own.
#include <emmintrin.h>

#include "crypto/base/dead_stack.h"
#include "crypto/hash/unroll.h"
#include "crypto/hash/whirlpool.h"
#include "crypto/hash/whirlpool_tables.h"

namespace toolbelt {
namespace {

[[gnu::always_inline]] inline __m128i loadWord(const std::uint64_t* from)
{
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
}

// next = the round function of current, XORed with added.
[[gnu::always_inline]] inline void applyRound(WhirlpoolState& next, const WhirlpoolState& current,
                                              const WhirlpoolState& added)
{
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(current.data()); // of a row the last one first
    unroll<8>([&]<std::uint32_t ROW>() __attribute__((always_inline)) {
        __m128i row = loadWord(&added[ROW]);
        unroll<8>([&]<std::uint32_t J>() __attribute__((always_inline)) {
            const std::uint32_t byte = bytes[(ROW + 8 - J) % 8 * 8 + 7 - J];
            row = _mm_xor_si128(row, loadWord(&whirlpoolTables.rows[J][byte]));
        });
        _mm_storel_epi64(reinterpret_cast<__m128i*>(&next[ROW]), row);
    });
}

[[gnu::noinline]] void takeBlocks(WhirlpoolState& state, const std::uint8_t* blocks, std::uint32_t count)
{
    struct
    {
        WhirlpoolState key[2], cipher[2], constant; // before and after a round
    } work;
    work.constant = {};
    for (; count != 0; --count, blocks += 64) {
        work.key[0] = state;
        for (std::uint32_t i = 0; i < 8; ++i) {
            std::uint64_t row;
            __builtin_memcpy(&row, blocks + 8 * i, sizeof row);
            row = __builtin_bswap64(row);
            work.cipher[0][i] = row ^ state[i];
            state[i] ^= row;
        }
        for (std::uint32_t round = 0; round < WHIRLPOOL_ROUNDS; ++round) {
            const std::uint32_t before = round % 2, after = 1 - before;
            work.constant[0] = whirlpoolTables.constants[round];
            applyRound(work.key[after], work.key[before], work.constant);
            applyRound(work.cipher[after], work.cipher[before], work.key[after]);
        }
        for (std::uint32_t i = 0; i < 8; ++i) state[i] ^= work.cipher[WHIRLPOOL_ROUNDS % 2][i];
    }
}

} // namespace

void whirlpoolCompressSse2(WhirlpoolState& state, const std::uint8_t* blocks, std::uint32_t count)
{
    takeBlocks(state, blocks, count);
    wipeDeadStack();
}

} // namespace toolbelt
