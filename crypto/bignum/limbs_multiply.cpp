// Products of limb arrays: the schoolbook core on 32-bit halves, and Karatsuba's method above it.
//
// An operand is split at h limbs into high and low. With the three products high, low and that of the two differences,
//     a b = high B^2h + (high + low -+ |aH - aL| |bH - bL|) B^h + low,    B = 2^64,
// minus when both differences point the same way. The parts are views into the operands; nothing is copied.
#include <bit>
#include <cstring>
#include <utility>

#include "crypto/base/cpu.h"
#include "crypto/bignum/branch_observer.h"
#include "crypto/bignum/columns.h"
#include "crypto/bignum/limbs.h"

namespace toolbelt::limbs {
namespace {

// The schoolbook product of short operands on vectors, when the processor has them.
bool multiplyOnVectors(Limb* r, const Limb* a, std::size_t na, const Limb* b, std::size_t nb) noexcept
{
    if (na > columnsLimit || nb < 2 || !cpu::has(cpu::SSE2)) return false;
    const auto multiplyColumns = cpu::has(cpu::AVX512) ? multiplyColumnsAvx512
                                 : cpu::has(cpu::AVX2) ? multiplyColumnsAvx2
                                                       : multiplyColumnsSse2;
    multiplyColumns(r, b, nb, a, na);
    return true;
}

// Top-limb index from which operands are split; below it (at most 1024 bits) the schoolbook core is used. Fixed.
constexpr std::size_t karatsubaTopLimb = 16;

void zero(Limb* r, std::size_t n) noexcept
{
    std::memset(r, 0, n * sizeof(Limb));
}

void multiplySchoolbook(Limb* r, const Limb* a, std::size_t na, const Limb* b, std::size_t nb) noexcept
{
    if (multiplyOnVectors(r, a, na, b, nb)) return;
    zero(r, na + nb);
    Word* rw = words(r);
    const Word* bw = words(b);
    for (std::size_t i = 0; i < 2 * nb; ++i) rw[2 * na + i] = multiplyAdd(rw + i, words(a), 2 * na, bw[i]);
}

// Each product of two different words is formed once and doubled; the squares of the words are added along the
// diagonal.
void squareSchoolbook(Limb* r, const Limb* a, std::size_t n) noexcept
{
    if (multiplyOnVectors(r, a, n, a, n)) return;
    zero(r, 2 * n);
    Word* rw = words(r);
    const Word* aw = words(a);
    const std::size_t count = 2 * n;
    for (std::size_t i = 0; i + 1 < count; ++i)
        rw[i + count] = multiplyAdd(rw + 2 * i + 1, aw + i + 1, count - i - 1, aw[i]);
    Word doubled = 0;        // bit moved up from the word below
    std::uint64_t carry = 0; // 0 or 1
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t diagonal = std::uint64_t{aw[i]} * aw[i];
        const Word low = rw[2 * i], high = rw[2 * i + 1];
        carry += static_cast<Word>(diagonal);
        carry += static_cast<Word>(low << 1 | doubled);
        rw[2 * i] = static_cast<Word>(carry);
        carry >>= 32;
        carry += diagonal >> 32;
        carry += static_cast<Word>(high << 1 | low >> 31);
        rw[2 * i + 1] = static_cast<Word>(carry);
        carry >>= 32;
        doubled = high >> 31;
    }
}

// r[0..n) = |high - low|; high has n limbs, at least as many as low, and its top limb is not zero. True when low is the
// larger one, which it can be only when both have the same length.
bool difference(Limb* r, const Limb* high, std::size_t n, const Limb* low, std::size_t nl) noexcept
{
    const bool lowIsLarger = compare(high, n, low, nl) < 0;
    if (lowIsLarger)
        subtract(r, low, nl, high, n);
    else
        subtract(r, high, n, low, nl);
    return lowIsLarger;
}

// Adds the middle term at h limbs. r holds low in its first 2h limbs and high in the n limbs behind; product, of n
// limbs, is what is taken from high + low, or added to it. middle is room for n + 1 limbs.
void addMiddle(Limb* r, std::size_t h, std::size_t n, const Limb* product, bool addProduct, Limb* middle) noexcept
{
    observe(addProduct ? Branch::middleAdded : Branch::middleTaken);
    middle[n] = add(middle, r + 2 * h, n, r, 2 * h);
    if (addProduct)
        add(middle, middle, n + 1, product, n);
    else
        subtract(middle, middle, n + 1, product, n);
    // The middle term is aH bL + aL bH, and with it the product still fits: nothing is carried out at the top.
    add(r + h, r + h, n + h, middle, significant(middle, n + 1));
}

} // namespace

// Each level of the recursion needs at most 2 na + 3 limbs and leaves at most half the shorter operand, rounded up.
std::size_t multiplyScratch(std::size_t na, std::size_t nb) noexcept
{
    if (na < nb) std::swap(na, nb);
    if (na <= karatsubaTopLimb || nb < 2) return 0;
    return static_cast<std::size_t>(std::bit_width(nb - 1)) * (2 * na + 3);
}

void multiply(Limb* r, const Limb* a, std::size_t na, const Limb* b, std::size_t nb, Limb* scratch) noexcept
{
    const std::size_t room = na + nb;
    na = significant(a, na);
    nb = significant(b, nb);
    if (room != na + nb) zero(r + na + nb, room - na - nb);
    if (na < nb) {
        std::swap(a, b);
        std::swap(na, nb);
    }
    if (na <= karatsubaTopLimb || nb < 2) {
        if (na == karatsubaTopLimb && nb == karatsubaTopLimb) observe(Branch::productSchoolbook);
        multiplySchoolbook(r, a, na, b, nb);
        return;
    }
    observe(Branch::productSplit);
    const std::size_t h = nb / 2; // (top-limb index of the shorter operand + 1) / 2
    const std::size_t highA = na - h, highB = nb - h;
    const std::size_t n = highA + highB; // at least 2h, for na >= nb >= 2h
    Limb* differenceA = scratch;
    Limb* differenceB = differenceA + highA;
    Limb* product = scratch + n + 1;
    Limb* deeper = product + n;
    const bool lowA = difference(differenceA, a + h, highA, a, h);
    const bool lowB = difference(differenceB, b + h, highB, b, h);
    multiply(product, differenceA, highA, differenceB, highB, deeper);
    multiply(r, a, h, b, h, deeper);
    multiply(r + 2 * h, a + h, highA, b + h, highB, deeper);
    addMiddle(r, h, n, product, lowA != lowB, scratch);
}

void square(Limb* r, const Limb* a, std::size_t n, Limb* scratch) noexcept
{
    const std::size_t room = 2 * n;
    n = significant(a, n);
    zero(r + 2 * n, room - 2 * n);
    if (n <= karatsubaTopLimb) {
        squareSchoolbook(r, a, n);
        return;
    }
    observe(Branch::squareSplit);
    const std::size_t h = n / 2; // (top-limb index + 1) / 2
    const std::size_t high = n - h;
    Limb* product = scratch + 2 * high + 1;
    Limb* deeper = product + 2 * high;
    difference(scratch, a + h, high, a, h);
    square(product, scratch, high, deeper);
    square(r, a, h, deeper);
    square(r + 2 * h, a + h, high, deeper);
    addMiddle(r, h, 2 * high, product, false, scratch);
}

} // namespace toolbelt::limbs
