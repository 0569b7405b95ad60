// Whirlpool without tables in memory: the 4-bit boxes that its substitution is made of are looked up in registers, so
// no memory is addressed by secret data. Compiled with flags of its own.
//
// The matrix lies by columns, two in each half of a register: the low halves are the key's, the high ones the cipher's,
// which take the same round. In this order a shift of columns turns the bytes of each, and a row is mixed by adding
// up multiples of the columns before it.
#include <immintrin.h>

#include "crypto/base/dead_stack.h"
#include "crypto/hash/unroll.h"
#include "crypto/hash/whirlpool.h"
#include "crypto/hash/whirlpool_tables.h"

namespace toolbelt {
namespace {

struct Tables
{
    alignas(16) std::uint8_t e[16], inverseE[16], r[16];
    // The last boxes of a byte's halves, in its own place and multiplied by 1, 2, 4 and 8.
    alignas(16) std::uint8_t high[4][16], low[4][16];
    alignas(32) std::uint8_t shift[4][32];
    alignas(16) std::uint8_t constants[WHIRLPOOL_ROUNDS][4][16];
};
consteval Tables makeTables()
{
    Tables tables = {};
    for (std::uint32_t i = 0; i < 16; ++i) {
        tables.e[i] = WHIRLPOOL_E[i];
        tables.inverseE[i] = WHIRLPOOL_INVERSE_E[i];
        tables.r[i] = WHIRLPOOL_R[i];
        for (std::uint32_t power = 0; power < 4; ++power) {
            tables.high[power][i] = whirlpoolMultiply(WHIRLPOOL_E[i] << 4, 1u << power);
            tables.low[power][i] = whirlpoolMultiply(WHIRLPOOL_INVERSE_E[i], 1u << power);
        }
    }
    for (std::uint32_t column = 0; column < 8; ++column)
        for (std::uint32_t row = 0; row < 8; ++row) {
            const std::uint32_t at = column % 2 * 8, from = at + (row + 8 - column) % 8;
            for (const std::uint32_t half : {0u, 16u})
                tables.shift[column / 2][half + at + row] = static_cast<std::uint8_t>(from);
        }
    for (std::uint32_t i = 0; i < 8 * WHIRLPOOL_ROUNDS; ++i)
        tables.constants[i / 8][i % 8 / 2][i % 2 * 8] = whirlpoolBox(i);
    return tables;
}
constexpr Tables TABLES = makeTables();

[[gnu::always_inline]] inline __m128i load(const void* from)
{
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

[[gnu::always_inline]] inline __m256i lookUp(const std::uint8_t (&box)[16], __m256i x)
{
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(load(box)), x);
}

// One round of both. Round keys go to the low halves, the key that comes out of them to the high ones.
[[gnu::always_inline]] inline void applyRound(__m256i (&x)[4], const std::uint8_t (&constant)[4][16])
{
    const Tables* opaque = &TABLES; // or the boxes would be copied to the stack first
    __asm__("" : "+r"(opaque));
    const Tables& tables = *opaque;
    const __m256i nibble = _mm256_set1_epi8(0x0F);
    __m256i times[4][4]; // 1, 2, 4, 8 times the substituted and shifted columns
    unroll<4>([&]<std::uint32_t P>() __attribute__((always_inline)) {
        const __m256i from = _mm256_load_si256(reinterpret_cast<const __m256i*>(tables.shift[P]));
        const __m256i shifted = _mm256_shuffle_epi8(x[P], from);
        __m256i high = lookUp(tables.e, _mm256_and_si256(_mm256_srli_epi16(shifted, 4), nibble));
        __m256i low = lookUp(tables.inverseE, _mm256_and_si256(shifted, nibble));
        const __m256i middle = lookUp(tables.r, _mm256_xor_si256(high, low));
        high = _mm256_xor_si256(high, middle);
        low = _mm256_xor_si256(low, middle);
        unroll<4>([&]<std::uint32_t POWER>() __attribute__((always_inline)) {
            times[POWER][P] = _mm256_xor_si256(lookUp(tables.high[POWER], high), lookUp(tables.low[POWER], low));
        });
    });
    const auto sum = [](auto... terms) __attribute__((always_inline))
    {
        return (terms ^ ...);
    };
    __m256i odd[4]; // what each pair of columns adds to the one that lies a column behind
    unroll<4>([&]<std::uint32_t P>() __attribute__((always_inline)) {
        constexpr std::uint32_t B = (P + 3) % 4, C = (P + 2) % 4, D = (P + 1) % 4; // one, two, three pairs before
        const auto& [one, two, four, eight] = times;
        odd[P] = sum(one[P], one[B], four[C], one[C], eight[D], one[D]);
        x[P] = sum(one[P], four[B], eight[C], two[D]);
    });
    unroll<4>([&]<std::uint32_t P>() __attribute__((always_inline)) {
        x[P] = sum(x[P], _mm256_alignr_epi8(odd[P], odd[(P + 3) % 4], 8), _mm256_zextsi128_si256(load(constant[P])));
        x[P] = sum(x[P], _mm256_permute2x128_si256(x[P], x[P], 0x08));
    });
}

// Rows become columns, and columns rows.
[[gnu::always_inline]] inline void transpose(__m128i (&x)[4])
{
    const __m128i mixed = _mm_set_epi8(15, 7, 14, 6, 13, 5, 12, 4, 11, 3, 10, 2, 9, 1, 8, 0);
    for (__m128i& two : x) two = _mm_shuffle_epi8(two, mixed);
    const __m128i a = _mm_unpacklo_epi16(x[0], x[1]), b = _mm_unpacklo_epi16(x[2], x[3]);
    const __m128i c = _mm_unpackhi_epi16(x[0], x[1]), d = _mm_unpackhi_epi16(x[2], x[3]);
    x[0] = _mm_unpacklo_epi32(a, b);
    x[1] = _mm_unpackhi_epi32(a, b);
    x[2] = _mm_unpacklo_epi32(c, d);
    x[3] = _mm_unpackhi_epi32(c, d);
}

// Rows are words in the state, with the first byte last, and bytes in order in a block.
[[gnu::noinline]] void takeBlocks(WhirlpoolState& state, const std::uint8_t* blocks, std::uint32_t count)
{
    const __m128i reversed = _mm_set_epi64x(0x08090A0B0C0D0E0F, 0x0001020304050607);
    auto* const rows = reinterpret_cast<__m128i*>(state.data());
    __m128i chain[4], block[4];
    for (int i = 0; i < 4; ++i) chain[i] = _mm_shuffle_epi8(_mm_loadu_si128(rows + i), reversed);
    transpose(chain);
    for (; count != 0; --count, blocks += 64) {
        for (int i = 0; i < 4; ++i) block[i] = load(blocks + 16 * i);
        transpose(block);
        __m256i x[4];
        for (int i = 0; i < 4; ++i) {
            block[i] ^= chain[i];
            x[i] = _mm256_inserti128_si256(_mm256_castsi128_si256(chain[i]), block[i], 1);
        }
        for (const auto& constant : TABLES.constants) applyRound(x, constant);
        for (int i = 0; i < 4; ++i) chain[i] = block[i] ^ _mm256_extracti128_si256(x[i], 1);
    }
    transpose(chain);
    for (int i = 0; i < 4; ++i) _mm_storeu_si128(rows + i, _mm_shuffle_epi8(chain[i], reversed));
}

} // namespace

void whirlpoolCompressAvx2(WhirlpoolState& state, const std::uint8_t* blocks, std::uint32_t count)
{
    takeBlocks(state, blocks, count);
    wipeDeadStack();
}

} // namespace toolbelt
