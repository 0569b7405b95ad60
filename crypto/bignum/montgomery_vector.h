// The text of the vector tiers, over a vector type: a struct of static functions that load, multiply and add vectors of
// LANES digits. Each tier includes it with a type of its own, so that no code is shared between files with different
// instructions.
//
// Four digits a pass: the four rows of a product are added with their operand shifted by none to three digits, so that
// every column stays in its lane; then the lowest four columns are cleared and the window moves up by them. Rows of the
// next pass are added between the clearing of four columns, which is one chain of latencies, and the use of what it
// gives.
//
// Operands are spread out first: for each vector of digits also those that begin one, two and three digits before it.
// Loads across the borders of vectors that were stored shortly before would wait for these to leave the store buffer.
#pragma once

#include <emmintrin.h>

#include <utility>

#include "crypto/bignum/montgomery_kernel.h"

namespace toolbelt {
namespace {

template <typename Vector>
class VectorProduct
{
    using V = typename Vector::Type;
    static constexpr int LANES = Vector::LANES;
    // With two lanes the borders inside a square cost more than it saves: 680 cycles instead of 500 at 512 bits, level
    // at 2048.
    static constexpr bool SQUARES = LANES > 2;

public:
    static void product(Digit* r, const Digit* a, const Digit* b, const DigitModulus& modulus) noexcept
    {
        const bool square = SQUARES && a == b;
        const std::size_t digits = modulus.digits;
        const Digit* const spread = modulus.spread;
        const Digit* const constants = spread + 4 * digits;
        Digit* const columns = modulus.work;
        Digit* const cleared = columns + 2 * digits + 4;
        Digit* const operand = cleared + 8;
        spreadOut(operand, b, digits);
        for (std::size_t i = 0; i < 2 * digits + 8 + LANES; i += LANES) Vector::store(columns + i, Vector::zero());
        addRows(columns, a, operand, 0, digits, square);
        for (std::size_t i = 0; i < digits; i += 4) {
            clearColumns(columns + i, cleared, constants);
            if (i + 4 < digits) addRows(columns, a, operand, i + 4, digits, square);
            addSpread(columns + i + 4, spread, digits, Vector::broadcast(cleared), Vector::broadcast(cleared + 1),
                      Vector::broadcast(cleared + 2), Vector::broadcast(cleared + 3));
        }
        settle(r, columns + digits, digits, constants, Vector::broadcast(cleared + 4));
    }

private:
    static V sum(V a, V b, V c, V d) noexcept { return Vector::add(Vector::add(a, b), Vector::add(c, d)); }
    static const __m128i* half(const Digit* x) noexcept { return reinterpret_cast<const __m128i*>(x); }
    static __m128i lowLane(const Digit* x) noexcept { return _mm_loadl_epi64(half(x)); }

    static void spreadOut(Digit* spread, const Digit* b, std::size_t digits) noexcept
    {
        V x0 = Vector::zero(), x1 = Vector::zero(), x2 = Vector::zero();
        for (std::size_t i = 0; i < digits + 4; i += LANES, spread += 4 * LANES) {
            const V y0 = i < digits ? Vector::loadAny(b + i) : Vector::zero(), y1 = Vector::moveUp(x0, y0),
                    y2 = Vector::moveUp(x1, y1), y3 = Vector::moveUp(x2, y2);
            Vector::store(spread, y0);
            Vector::store(spread + LANES, y1);
            Vector::store(spread + 2 * LANES, y2);
            Vector::store(spread + 3 * LANES, y3);
            x0 = y0;
            x1 = y1;
            x2 = y2;
        }
    }

    // Adds digits i to i + 3 of a times b, which is spread out; of a square, what the rows before did not add.
    [[gnu::always_inline]] static inline void addRows(Digit* columns, const Digit* a, const Digit* b, std::size_t i,
                                                      std::size_t digits, bool square) noexcept
    {
        const V a0 = Vector::broadcast(a + i), a1 = Vector::broadcast(a + i + 1), a2 = Vector::broadcast(a + i + 2),
                a3 = Vector::broadcast(a + i + 3);
        if (!square) {
            addSpread(columns + i, b, digits + 4, a0, a1, a2, a3);
            return;
        }
        // The four digits times each other, then twice the four times those above them. Where the border of the two
        // runs through a vector, the lanes of the multiplier differ.
        if constexpr (SQUARES) {
            columns += 2 * i;
            b += 4 * i;
            [&]<std::size_t... v>(std::index_sequence<v...>)
            {
                (addSquareVector<int(v) * LANES>(columns, b, a0, a1, a2, a3), ...);
            }
            (std::make_index_sequence<8 / LANES>());
            addSpread(columns + 8, b + 32, digits - i - 4, Vector::add(a0, a0), Vector::add(a1, a1),
                      Vector::add(a2, a2), Vector::add(a3, a3));
        }
    }

    // columns[0..count) += a0 b[0..) + a1 b[-1..) + a2 b[-2..) + a3 b[-3..), two vectors a round.
    [[gnu::always_inline]] static inline void addSpread(Digit* columns, const Digit* b, std::size_t count, V a0, V a1,
                                                        V a2, V a3) noexcept
    {
        const auto addVector = [&] {
            Vector::store(columns,
                          Vector::add(Vector::load(columns), sum(Vector::multiply(a0, Vector::load(b)),
                                                                 Vector::multiply(a1, Vector::load(b + LANES)),
                                                                 Vector::multiply(a2, Vector::load(b + 2 * LANES)),
                                                                 Vector::multiply(a3, Vector::load(b + 3 * LANES)))));
            b += 4 * LANES;
            columns += LANES;
        };
        if (count & LANES) addVector();
        for (std::size_t rounds = count / (2 * LANES); rounds != 0; --rounds) {
            addVector();
            addVector();
        }
    }

    // The vector of columns t to t + LANES above the lowest column of a square's pass.
    template <int t>
    static void addSquareVector(Digit* columns, const Digit* b, V a0, V a1, V a2, V a3) noexcept
    {
        b += 4 * t;
        Vector::store(columns + t,
                      Vector::add(Vector::load(columns + t), sum(squareTerm<t, 0>(b, a0), squareTerm<t, 1>(b, a1),
                                                                 squareTerm<t, 2>(b, a2), squareTerm<t, 3>(b, a3))));
    }

    // Digit s of the four times the digits that meet it in columns t to t + LANES: none below the four, those of the
    // four once, those above them twice.
    template <int t, int s>
    static V squareTerm(const Digit* b, V multiplier) noexcept
    {
        constexpr int first = t - s, last = first + LANES - 1;
        if constexpr (last < 0) {
            return Vector::zero();
        } else {
            V weighted = multiplier;
            if constexpr (first < 0) weighted = Vector::keepFrom(multiplier, -first);
            if constexpr (first >= 4)
                weighted = Vector::add(multiplier, multiplier);
            else if constexpr (last >= 4)
                weighted = Vector::add(weighted, Vector::keepFrom(multiplier, 4 - first));
            return Vector::multiply(weighted, Vector::load(b + s * LANES));
        }
    }

    // Clears the lowest four columns: cleared gets their digits, by which n c + 1 is still to be added in the columns
    // above, and behind them what is carried into the first of those columns, which the next pass adds.
    [[gnu::always_inline]] static inline void clearColumns(const Digit* columns, Digit* cleared,
                                                           const Digit* constants) noexcept
    {
        const auto constant = [&](int i) { return _mm_load_si128(half(constants + 2 * i)); };
        const auto times = [&](__m128i digit, int i) { return _mm_mul_epu32(digit, constant(i)); };
        const auto keep = [&](Digit* place, __m128i x) { _mm_storel_epi64(reinterpret_cast<__m128i*>(place), x); };
        const auto low = [&](__m128i x) { return _mm_and_si128(x, constant(DIGIT_MASK)); };
        const auto up = [&](__m128i x) { return _mm_srl_epi64(x, constant(DIGIT_BITS)); };

        const __m128i x0 = _mm_add_epi64(lowLane(columns), lowLane(cleared + 4)), d0 = low(x0);
        const __m128i rest1 = _mm_add_epi64(lowLane(columns + 1), up(x0));
        const __m128i x1 = _mm_add_epi64(rest1, times(d0, 0)), d1 = low(x1);
        const __m128i rest2 = _mm_add_epi64(_mm_add_epi64(lowLane(columns + 2), times(d0, 1)), up(x1));
        const __m128i x2 = _mm_add_epi64(rest2, times(d1, 0)), d2 = low(x2);
        const __m128i rest3 = _mm_add_epi64(_mm_add_epi64(lowLane(columns + 3), times(d0, 2)), times(d1, 1));
        const __m128i x3 = _mm_add_epi64(_mm_add_epi64(rest3, up(x2)), times(d2, 0));
        keep(cleared, d0);
        keep(cleared + 1, d1);
        keep(cleared + 2, d2);
        keep(cleared + 3, low(x3));
        keep(cleared + 4, up(x3));
    }

    // Two carries from every column into the next at the same time leave digits of little more than w bits. carry comes
    // in below. The value is below 2^(w digits - 1), so nothing is carried out at the top.
    static void settle(Digit* r, const Digit* columns, std::size_t digits, const Digit* constants, V carry) noexcept
    {
        const __m128i bits = _mm_load_si128(half(constants + 2 * DIGIT_BITS));
        const V mask = Vector::broadcast(constants + 2 * DIGIT_MASK);
        V again = Vector::zero();
        for (std::size_t i = 0; i < digits; i += LANES) {
            const V x = Vector::load(columns + i);
            const V up = Vector::shiftRight(x, bits);
            const V y = Vector::add(Vector::both(x, mask), Vector::moveUp(carry, up));
            const V upAgain = Vector::shiftRight(y, bits);
            Vector::storeAny(r + i, Vector::add(Vector::both(y, mask), Vector::moveUp(again, upAgain)));
            carry = up;
            again = upAgain;
        }
    }
};

} // namespace
} // namespace toolbelt
