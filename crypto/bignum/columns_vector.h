// The text of the vector tiers of the schoolbook product, over a vector type. Each tier includes it with a type of its
// own, so that no code is shared between files with different instructions.
//
// The product is formed column by column on the 32-bit halves of the limbs, the carry chain run once at the end. A
// vector multiplies the lower words of its 64-bit lanes, so a load of words takes every second one: the lanes are
// columns c, c + 2, ..., and a second vector, loaded one word further, has the columns between them. Each lane sums its
// products modulo 2^64 and, apart, their upper halves; the sum of the lower halves is the difference of the two.
#pragma once

#include <immintrin.h>

#include <algorithm>
#include <cstring>

#include "crypto/base/heap.h"
#include "crypto/bignum/columns.h"

namespace toolbelt::limbs {
namespace {

template <typename Vector>
struct ColumnSums
{
    typename Vector::Type products = Vector::zero(), upper = Vector::zero();

    void add(typename Vector::Type a, const Word* b) noexcept
    {
        const auto product = Vector::multiply(a, Vector::loadAny(b));
        products = Vector::add(products, product);
        upper = Vector::add(upper, Vector::upperHalves(product));
    }
    typename Vector::Type lower() const noexcept { return Vector::subtract(products, Vector::toUpperHalves(upper)); }
};

// r = a + b + carry, returns the carry.
inline unsigned char addWords(unsigned char carry, Word a, Word b, Word* r) noexcept
{
    return _addcarry_u32(carry, a, b, reinterpret_cast<unsigned*>(r));
}

template <typename Vector>
void multiplyColumns(Limb* r, const Limb* a, std::size_t na, const Limb* b, std::size_t nb) noexcept
{
    constexpr std::size_t BLOCK = 2 * Vector::LANES; // columns at a time
    const std::size_t countA = 2 * na, countB = 2 * nb;
    struct
    {
        Word b[2 * columnsLimit + 3 * BLOCK]; // zeros around it, as far as a block looks
        Limb sums[BLOCK];
    } work;
    const WipeOnExit guard(work);
    Word* const middle = work.b + BLOCK;
    std::memset(work.b, 0, BLOCK * sizeof(Word));
    std::memcpy(middle, b, countB * sizeof(Word));
    std::memset(middle + countB, 0, 2 * BLOCK * sizeof(Word));

    const Word* const aw = words(a);
    Word* rw = words(r);
    auto pending = Vector::zero(); // upper halves of the block's last column but for what its own columns got
    // A column's sum exceeds a word by a few bits, which are added in the next one.
    Word excess = 0;
    unsigned char carry = 0;
    const auto settle = [&](std::size_t columns) {
#pragma GCC unroll 8
        for (std::size_t i = 0; i < columns; i += 2, rw += 2) {
            const Word *const even = words(work.sums) + i, *const odd = even + 2 * Vector::LANES;
            carry = addWords(carry, even[0], excess, rw);
            carry = addWords(carry, odd[0], even[1], rw + 1);
            excess = odd[1];
        }
    };
    for (std::size_t column = 0; column < countA + countB; column += BLOCK) {
        ColumnSums<Vector> even, odd;
        const std::size_t first = column < countB ? 0 : column - countB + 1;
        const std::size_t end = std::min(countA, column + BLOCK);
        const Word* place = middle + column - first;
#pragma GCC unroll 2
        for (std::size_t i = first; i < end; ++i, --place) {
            const auto word = Vector::broadcastWord(aw[i]);
            even.add(word, place);
            odd.add(word, place + 1);
        }
        // Upper halves belong to the column above: those of even columns to the odd one beside them.
        Vector::storeAny(work.sums, Vector::add(even.lower(), Vector::moveUp(pending, odd.upper)));
        Vector::storeAny(work.sums + Vector::LANES, Vector::add(odd.lower(), even.upper));
        pending = odd.upper;
        if (countA + countB - column >= BLOCK)
            settle(BLOCK);
        else
            settle(countA + countB - column);
    }
}

} // namespace
} // namespace toolbelt::limbs
