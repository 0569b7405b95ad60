// The text of the vector tiers of the schoolbook product, over a vector type. Each tier includes it with a type of its
// own, so that no code is shared between files with different instructions.
//
// The product is formed column by column on the 32-bit halves of the limbs, the carry chain run once at the end. A
// vector multiplies the lower words of its 64-bit lanes, so a load of words takes every second one: the lanes are
// columns c, c + 2, ..., and a second vector, loaded one word further, has the columns between them. Each lane sums its
// products modulo 2^64 and, apart, their upper halves; the sum of the lower halves is the difference of the two.
#pragma once

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
    Limb carry = 0;
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
        const auto evenSums = Vector::add(even.lower(), Vector::moveUp(pending, odd.upper));
        const auto oddSums = Vector::add(odd.lower(), even.upper);
        pending = odd.upper;
        Vector::storeAny(work.sums, evenSums);
        Vector::storeAny(work.sums + Vector::LANES, oddSums);
        const std::size_t columns = std::min(BLOCK, countA + countB - column);
        for (std::size_t i = 0; i < columns / 2; ++i, rw += 2) {
            carry += work.sums[i];
            rw[0] = static_cast<Word>(carry);
            carry = (carry >> 32) + work.sums[Vector::LANES + i];
            rw[1] = static_cast<Word>(carry);
            carry >>= 32;
        }
    }
}

} // namespace
} // namespace toolbelt::limbs
