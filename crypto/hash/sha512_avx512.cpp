// SHA-512 on vector registers, which hold 64-bit words whole where the general ones of 32-bit code do not: compiled
// with flags of its own. A register holds two words of the schedule, and one of the state: its upper half is of no
// interest. The chains from one a or e to the next are as short as they can be: a rotation, a logical function, an
// addition; the order of the additions sees to that.
#include <immintrin.h>

#include "crypto/base/dead_stack.h"
#include "crypto/hash/sha2_constants.h"
#include "crypto/hash/sha512.h"
#include "crypto/hash/unroll.h"

namespace toolbelt {
namespace {

using Word = __m128i;
// Logical functions of three words.
constexpr int XOR = 0x96, CHOICE = 0xCA, MAJORITY = 0xE8;

template <int A, int B, int C>
[[gnu::always_inline]] inline Word turned(Word x)
{
    return _mm_ternarylogic_epi64(_mm_ror_epi64(x, A), _mm_ror_epi64(x, B), _mm_ror_epi64(x, C), XOR);
}

// Two words of the schedule.
template <int A, int B, int SHIFT>
[[gnu::always_inline]] inline Word expanded(Word x)
{
    return _mm_ternarylogic_epi64(_mm_ror_epi64(x, A), _mm_ror_epi64(x, B), _mm_srli_epi64(x, SHIFT), XOR);
}

// The new a and e take the place of h and d. added: the word of the schedule with its constant.
[[gnu::always_inline]] inline void step(Word a, Word b, Word c, Word& d, Word e, Word f, Word g, Word& h, Word added)
{
    const Word ready =
        _mm_add_epi64(_mm_add_epi64(_mm_add_epi64(h, added), d), _mm_ternarylogic_epi64(e, f, g, CHOICE));
    const Word rest = _mm_sub_epi64(_mm_ternarylogic_epi64(a, b, c, MAJORITY), d);
    d = _mm_add_epi64(ready, turned<14, 18, 41>(e));
    h = _mm_add_epi64(turned<28, 34, 39>(a), _mm_add_epi64(d, rest));
}

[[gnu::noinline]] void takeBlocks(Sha512State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    const Word bigEndian = _mm_set_epi64x(0x08090A0B0C0D0E0F, 0x0001020304050607);
    const auto wordAt = [](const std::uint64_t* from) { return _mm_loadl_epi64(reinterpret_cast<const Word*>(from)); };
    Word w[8], v[8];
    for (; count != 0; --count, blocks += 128) {
        for (std::uint32_t i = 0; i < 8; ++i) v[i] = wordAt(&state[i]);
        for (std::uint32_t first = 0; first < 80; first += 16) {
            const auto* constants = reinterpret_cast<const Word*>(&SHA512_CONSTANTS[first]);
            unroll<8>([&]<std::uint32_t I>() __attribute__((always_inline)) {
                if (first == 0) {
                    const Word bytes = _mm_loadu_si128(reinterpret_cast<const Word*>(blocks) + I);
                    w[I] = _mm_shuffle_epi8(bytes, bigEndian);
                } else {
                    const Word early = _mm_alignr_epi8(w[(I + 1) % 8], w[I], 8);
                    const Word middle = _mm_alignr_epi8(w[(I + 5) % 8], w[(I + 4) % 8], 8);
                    w[I] = _mm_add_epi64(_mm_add_epi64(w[I], middle),
                                         _mm_add_epi64(expanded<1, 8, 7>(early), expanded<19, 61, 6>(w[(I + 7) % 8])));
                }
                const Word added = _mm_add_epi64(w[I], _mm_load_si128(constants + I));
                // The words stay, their roles move.
                unroll<2>([&]<std::uint32_t J>() __attribute__((always_inline)) {
                    constexpr std::uint32_t A = 16 - (2 * I + J);
                    step(v[A % 8], v[(A + 1) % 8], v[(A + 2) % 8], v[(A + 3) % 8], v[(A + 4) % 8], v[(A + 5) % 8],
                         v[(A + 6) % 8], v[(A + 7) % 8], J == 0 ? added : _mm_unpackhi_epi64(added, added));
                });
            });
        }
        for (std::uint32_t i = 0; i < 8; ++i)
            _mm_storel_epi64(reinterpret_cast<Word*>(&state[i]), _mm_add_epi64(v[i], wordAt(&state[i])));
    }
}

} // namespace

void sha512CompressAvx512(Sha512State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    takeBlocks(state, blocks, count);
    wipeDeadStack();
}

} // namespace toolbelt
