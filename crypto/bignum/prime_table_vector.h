// The text of the vector tiers of prime_table_batch.h, over a vector type: a candidate a lane, in Montgomery form with
// R = 2^32.
#pragma once

#include <bit>

#include "crypto/bignum/limbs_word.h"
#include "crypto/bignum/prime_table_batch.h"

namespace toolbelt {
namespace {

template <typename Vector>
struct FermatLanes
{
    using V = typename Vector::Type;
    static constexpr std::uint32_t COUNT = fermatBatch / Vector::LANES;

    V n[COUNT], inverse[COUNT]; // the candidates, and -1/n mod 2^32
    V exponent[COUNT];          // its next bit on top of the lower half
    V witness[COUNT], power[COUNT];

    // a b / R, below 2 n for a and b below 2 n.
    V product(V a, V b, std::uint32_t i) const noexcept
    {
        const V value = Vector::multiply(a, b);
        return Vector::upperHalves(Vector::add(value, Vector::multiply(Vector::multiply(value, inverse[i]), n[i])));
    }

    void takeBit() noexcept
    {
        for (std::uint32_t i = 0; i < COUNT; ++i) {
            const V square = product(power[i], power[i], i), both = product(square, witness[i], i);
            exponent[i] = Vector::add(exponent[i], exponent[i]);
            const V choice = Vector::subtract(Vector::zero(), Vector::upperHalves(exponent[i]));
            exponent[i] = Vector::subtract(exponent[i], Vector::toUpperHalves(Vector::upperHalves(exponent[i])));
            power[i] = Vector::add(square, Vector::both(choice, Vector::subtract(both, square)));
        }
    }
};

template <typename Vector>
std::uint32_t fermatRounds(std::uint32_t first, const std::uint32_t* witnesses) noexcept
{
    const auto bits = static_cast<unsigned>(std::bit_width(first + 2 * fermatBatch));
    std::uint64_t n[fermatBatch], inverse[fermatBatch], exponent[fermatBatch], witness[fermatBatch], one[fermatBatch];
    for (std::uint32_t i = 0; i < fermatBatch; ++i) {
        const std::uint32_t candidate = first + 2 * i;
        std::uint32_t negative = candidate; // 1/n, right to three bits, then to twice as many each time
        for (int right = 3; right < 32; right *= 2) negative *= 2 - candidate * negative;
        n[i] = candidate;
        inverse[i] = ~negative + 1;
        exponent[i] = std::uint64_t{candidate - 1} << (32 - bits);
        one[i] = limbs::remainderWide(1, 0, candidate);
        witness[i] = limbs::remainderWide(witnesses[i], 0, candidate);
    }
    FermatLanes<Vector> lanes;
    for (std::uint32_t i = 0; i < lanes.COUNT; ++i) {
        const std::uint32_t lane = i * Vector::LANES;
        lanes.n[i] = Vector::loadAny(n + lane);
        lanes.inverse[i] = Vector::loadAny(inverse + lane);
        lanes.exponent[i] = Vector::loadAny(exponent + lane);
        lanes.witness[i] = Vector::loadAny(witness + lane);
        lanes.power[i] = Vector::loadAny(one + lane);
    }
    for (unsigned bit = 0; bit < bits; ++bit) lanes.takeBit();
    std::uint32_t passed = 0;
    for (std::uint32_t i = 0; i < lanes.COUNT; ++i) Vector::storeAny(witness + i * Vector::LANES, lanes.power[i]);
    for (std::uint32_t i = 0; i < fermatBatch; ++i)
        passed |= std::uint32_t{witness[i] == one[i] || witness[i] == one[i] + n[i]} << i;
    return passed;
}

} // namespace
} // namespace toolbelt
