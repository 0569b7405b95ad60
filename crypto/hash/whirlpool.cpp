// Whirlpool: a block cipher of ten rounds in Miyaguchi-Preneel mode, keyed by the chaining value. A round (substitute
// bytes, shift columns, mix rows) is eight table look-ups a row; the tables, 16 KiB, are built by the compiler from the
// cipher's definition. Look-ups are indexed by secret data: their timing is not constant.
#include "crypto/hash/whirlpool.h"

#include <bit>

#include "crypto/base/bytes.h"
#include "crypto/base/cpu.h"
#include "crypto/hash/unroll.h"
#include "crypto/hash/whirlpool_tables.h"

namespace toolbelt {
namespace {

// What a byte adds is S(x) times the circulant row of the diffusion matrix, turned by the column. The constants are the
// box itself, eight bytes a round.
consteval WhirlpoolTables makeTables()
{
    WhirlpoolTables tables = {};
    for (std::uint32_t x = 0; x < 256; ++x) {
        std::uint64_t row = 0;
        for (const std::uint8_t factor : WHIRLPOOL_CIRCULANT)
            row = row << 8 | whirlpoolMultiply(whirlpoolBox(x), factor);
        for (std::uint32_t column = 0; column < 8; ++column) tables.rows[column][x] = std::rotr(row, 8 * int(column));
    }
    for (std::uint32_t i = 0; i < 8 * WHIRLPOOL_ROUNDS; ++i)
        tables.constants[i / 8] = tables.constants[i / 8] << 8 | whirlpoolBox(i);
    return tables;
}

// One row of substitute, shift columns and mix rows: column j comes from j rows above.
template <std::uint32_t ROW>
[[gnu::always_inline]] inline std::uint64_t mixRow(const WhirlpoolState& matrix)
{
    std::uint64_t row = 0;
    unroll<8>([&]<std::uint32_t J>() __attribute__((always_inline)) {
        row ^= whirlpoolTables.rows[J][static_cast<std::uint8_t>(matrix[(ROW + 8 - J) % 8] >> (56 - 8 * J))];
    });
    return row;
}

// next = the round function of current, without its key.
void applyRound(WhirlpoolState& next, const WhirlpoolState& current)
{
    unroll<8>([&]<std::uint32_t ROW>() __attribute__((always_inline)) { next[ROW] = mixRow<ROW>(current); });
}

} // namespace

constexpr WhirlpoolTables whirlpoolTables = makeTables();

void whirlpoolCompress(WhirlpoolState& state, const std::uint8_t* blocks, std::uint32_t count)
{
    struct
    {
        WhirlpoolState key, cipher, next;
    } work;
    const WipeOnExit wipeWork(work);
    for (; count != 0; --count, blocks += 64) {
        work.key = state;
        for (std::uint32_t i = 0; i < 8; ++i) {
            const std::uint64_t row = load64be(blocks + 8 * i);
            work.cipher[i] = row ^ state[i];
            state[i] ^= row;
        }
        for (const std::uint64_t constant : whirlpoolTables.constants) {
            applyRound(work.next, work.key);
            work.next[0] ^= constant;
            work.key = work.next;
            applyRound(work.next, work.cipher);
            for (std::uint32_t i = 0; i < 8; ++i) work.cipher[i] = work.next[i] ^ work.key[i];
        }
        for (std::uint32_t i = 0; i < 8; ++i) state[i] ^= work.cipher[i];
    }
}

void whirlpoolChoose(WhirlpoolContext* context)
{
    context->compress = cpu::has(cpu::AVX2)   ? whirlpoolCompressAvx2
                        : cpu::has(cpu::SSE2) ? whirlpoolCompressSse2
                                              : whirlpoolCompress;
}

Status whirlpoolReset(WhirlpoolContext* context)
{
    if (context == nullptr) return CRYPT_E_NULL_CONTEXT;
    start(*context, {});
    return CRYPT_OK;
}

Status whirlpoolUpdate(WhirlpoolContext* context, const std::uint8_t* data, std::uint32_t length)
{
    if (context == nullptr) return CRYPT_E_NULL_CONTEXT;
    countAndAbsorb(*context, data, length, context->compress);
    return CRYPT_OK;
}

Status whirlpoolFinal(WhirlpoolContext* context, std::uint8_t* output)
{
    if (context == nullptr) return CRYPT_E_NULL_CONTEXT;
    // The length is 256 bits, of which the counter fills the last 64.
    std::uint8_t length[32] = {};
    store64be(length + 24, context->counter);
    pad(*context, length, context->compress);
    for (std::uint32_t i = 0; i < 8; ++i) store64be(output + 8 * i, context->state[i]);
    return CRYPT_OK;
}

} // namespace toolbelt
