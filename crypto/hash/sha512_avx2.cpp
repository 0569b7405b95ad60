// SHA-512 on vector registers, which hold 64-bit words whole where the general ones of 32-bit code do not: compiled
// with flags of its own. A step does the same to a, b, c, d as to e, f, g, h but for the amounts of the rotations, so a
// register holds a word of each: a and e, b and f, c and g, d and h. Only AVX2 rotates its halves by different amounts.
#include <immintrin.h>

#include "crypto/base/dead_stack.h"
#include "crypto/hash/sha2_constants.h"
#include "crypto/hash/sha512.h"
#include "crypto/hash/unroll.h"

namespace toolbelt {
namespace {

// Amounts of the rotations of a and of e, to the right, and to the left for the same: read from memory as they are
// used, since eight registers are few.
alignas(16) constexpr std::uint64_t AMOUNTS[6][2] = {{28, 14}, {34, 18}, {39, 41}, {36, 50}, {30, 46}, {25, 23}};

template <int BY>
[[gnu::always_inline]] inline __m128i rotated(__m128i x)
{
    return _mm_xor_si128(_mm_srli_epi64(x, BY), _mm_slli_epi64(x, 64 - BY));
}

// Two words of the schedule.
[[gnu::always_inline]] inline __m128i expanded(__m128i x)
{
    return _mm_xor_si128(_mm_xor_si128(rotated<1>(x), rotated<8>(x)), _mm_srli_epi64(x, 7));
}
[[gnu::always_inline]] inline __m128i expandedLate(__m128i x)
{
    return _mm_xor_si128(_mm_xor_si128(rotated<19>(x), rotated<61>(x)), _mm_srli_epi64(x, 6));
}

// Turns a and e, b and f, c and g, d and h with the constant and the word of the schedule in both halves of added;
// the new a and e take the place of d and h.
[[gnu::always_inline]] inline void step(__m128i ae, __m128i bf, __m128i cg, __m128i& dh, __m128i added,
                                        const __m128i* amounts)
{
    const auto turned = [&](int i) {
        return _mm_xor_si128(_mm_srlv_epi64(ae, amounts[i]), _mm_sllv_epi64(ae, amounts[i + 3]));
    };
    const __m128i sums = _mm_xor_si128(_mm_xor_si128(turned(0), turned(1)), turned(2));
    // Choice of f or g by e; the majority of a, b and c is a choice of b or c by a ^ c.
    const __m128i selector = _mm_xor_si128(ae, _mm_move_epi64(cg));
    const __m128i chosen = _mm_xor_si128(cg, _mm_and_si128(selector, _mm_xor_si128(bf, cg)));
    const __m128i mixed = _mm_add_epi64(sums, chosen);
    const __m128i all = _mm_add_epi64(mixed, _mm_add_epi64(dh, added)); // of interest: the high half, the one of h
    dh = _mm_add_epi64(_mm_unpacklo_epi64(mixed, dh), _mm_unpackhi_epi64(all, all));
}

[[gnu::noinline]] void takeBlocks(Sha512State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    const __m128i bigEndian = _mm_set_epi64x(0x08090A0B0C0D0E0F, 0x0001020304050607);
    __m128i chain[4]; // the state as steps want it
    for (std::uint32_t i = 0; i < 4; ++i)
        chain[i] = _mm_set_epi64x(static_cast<long long>(state[i + 4]), static_cast<long long>(state[i]));
    __m128i w[8]; // the last 16 words of the schedule, in a ring
    for (; count != 0; --count, blocks += 128) {
        __m128i v[4] = {chain[0], chain[1], chain[2], chain[3]};
        for (std::uint32_t first = 0; first < 80; first += 16) {
            const auto* constants = reinterpret_cast<const __m128i*>(&SHA512_CONSTANTS[first]);
            const auto* amounts = reinterpret_cast<const __m128i*>(AMOUNTS);
            __asm__("" : "+r"(amounts)); // opaque, or they would be copied to the stack first
            unroll<8>([&]<std::uint32_t I>() __attribute__((always_inline)) {
                if (first == 0) {
                    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(blocks) + I);
                    w[I] = _mm_shuffle_epi8(bytes, bigEndian);
                } else {
                    const __m128i early = _mm_alignr_epi8(w[(I + 1) % 8], w[I], 8);
                    const __m128i middle = _mm_alignr_epi8(w[(I + 5) % 8], w[(I + 4) % 8], 8);
                    w[I] = _mm_add_epi64(_mm_add_epi64(w[I], middle),
                                         _mm_add_epi64(expanded(early), expandedLate(w[(I + 7) % 8])));
                }
                const __m128i added = _mm_add_epi64(w[I], _mm_load_si128(constants + I));
                // The registers stay, their roles move.
                constexpr std::uint32_t EVEN = 8 - 2 * I % 4, ODD = EVEN - 1;
                step(v[EVEN % 4], v[(EVEN + 1) % 4], v[(EVEN + 2) % 4], v[(EVEN + 3) % 4],
                     _mm_unpacklo_epi64(added, added), amounts);
                step(v[ODD % 4], v[(ODD + 1) % 4], v[(ODD + 2) % 4], v[(ODD + 3) % 4], _mm_unpackhi_epi64(added, added),
                     amounts);
            });
        }
        for (std::uint32_t i = 0; i < 4; ++i) chain[i] = _mm_add_epi64(chain[i], v[i]);
    }
    for (std::uint32_t i = 0; i < 4; ++i) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(&state[i]), chain[i]);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(&state[i + 4]), _mm_unpackhi_epi64(chain[i], chain[i]));
    }
}

} // namespace

void sha512CompressAvx2(Sha512State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    takeBlocks(state, blocks, count);
    wipeDeadStack();
}

} // namespace toolbelt
