// GOST 28147-89 on sixteen blocks side by side, its boxes looked up in registers: compiled with flags of its own. No
// memory is addressed by secret data here.
#include <immintrin.h>

#include "crypto/cipher/gost_rounds.h"
#include "crypto/cipher/wide_words.h"

namespace toolbelt {
namespace {

// The boxes of the lower nibbles of all bytes of a word, side by side, and those of the upper ones; each output in the
// nibble where it belongs. A register is such a table.
struct BoxTables
{
    alignas(64) std::uint8_t box[2][4 * 16];
};
constexpr BoxTables boxTables = [] {
    BoxTables tables = {};
    for (int n = 0; n < 8; ++n)
        for (int i = 0; i < 16; ++i)
            tables.box[n % 2][n / 2 * 16 + i] = static_cast<std::uint8_t>(K[n][i] << (n % 2 * 4));
    return tables;
}();

// The lower nibbles of all bytes through the boxes of a table: the byte's place in its word says which of them.
[[gnu::always_inline]] inline Words lookUp(Words x, const std::uint8_t* table)
{
    return Words(_mm512_permutexvar_epi8(__m512i((x & 0x0F0F0F0F) | 0x30201000), _mm512_load_si512(table)));
}

[[gnu::always_inline]] inline Words f(Words sum)
{
    const BoxTables* tables = &boxTables;
    __asm__("" : "+r"(tables)); // opaque, or they would take two of eight registers
    const Words found = lookUp(sum, tables->box[0]) | lookUp(sum >> 4, tables->box[1]);
    return found << 11 | found >> 21;
}

} // namespace

std::uint32_t gostDecryptAvx512(const void* keys, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks)
{
    const auto* const key = static_cast<const std::uint32_t*>(keys);
    return transformWide<1, 2>(in, out, blocks, [key](Words(&x)[1][2]) { transformRounds<1>(key, x, f); });
}

} // namespace toolbelt
