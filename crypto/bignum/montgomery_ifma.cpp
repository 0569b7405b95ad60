// The Montgomery product on AVX-512 with 52-bit multiplication, eight digits a vector (Gueron and Krasnov, Accelerating
// big integer arithmetic using Intel IFMA extensions).
//
// A row a multiplier digit. The columns are a window that begins at the column to clear and moves up by a lane a row.
// That column's digit is the multiple of n c that clears it, so that only spreading it over a vector, multiplying and
// adding stand between one row and the next. Everything else is summed apart: upper halves of products belong a column
// higher, so those of a row's digit are added once the window has moved, together with the lower halves of the next
// digit's, and those of the row's multiple of n c a row later.
//
// The last column is cleared by a multiple of n: the result is below 4 n, not 4 n c, and takes no digit more than n.
//
// There are eight vector registers in a 32-bit process. Up to three vectors of columns stay in them, with one sum,
// three digits to multiply by and one vector to spare; other operands come from memory.
#include <immintrin.h>

#include <utility>

#include "crypto/bignum/montgomery_kernel.h"

namespace toolbelt {
namespace {

using Vector = __m512i;
constexpr std::size_t LANES = 8;
constexpr __mmask8 LOWEST = 1;

// Made anew each time: a constant, the compiler would keep it in a register.
inline Vector zero() noexcept
{
    Vector x;
    __asm__ volatile("vpxor %x0, %x0, %x0" : "=x"(x));
    return x;
}
inline Vector load(const Digit* x, std::size_t v = 0) noexcept
{
    return _mm512_loadu_si512(x + LANES * v);
}
inline Vector broadcast(const Digit* x) noexcept
{
    return _mm512_set1_epi64(static_cast<long long>(*x));
}
inline Vector spreadLowest(Vector x) noexcept
{
    return _mm512_broadcastq_epi64(_mm512_castsi512_si128(x));
}
// In the lowest lane what it carries; zeros above.
inline Vector carryOfLowest(Vector x) noexcept
{
    return _mm512_maskz_srli_epi64(LOWEST, x, wideDigit);
}
inline Vector moveDown(Vector x, Vector above) noexcept
{
    return _mm512_alignr_epi64(above, x, 1);
}
inline Vector moveUp(Vector below, Vector x) noexcept
{
    return _mm512_alignr_epi64(x, below, LANES - 1);
}
inline Vector add(Vector a, Vector b) noexcept
{
    return _mm512_add_epi64(a, b);
}
// sum + the lower, and the upper, 52 bits of the products of the lanes' lower 52 bits.
inline Vector addLow(Vector sum, Vector a, Vector b) noexcept
{
    return _mm512_madd52lo_epu64(sum, a, b);
}
inline Vector addHigh(Vector sum, Vector a, Vector b) noexcept
{
    return _mm512_madd52hi_epu64(sum, a, b);
}

// The columns of a short modulus, COUNT vectors in registers.
template <std::size_t COUNT>
struct Columns
{
    Vector vectors[COUNT];

    Columns(Digit*, std::size_t) noexcept {}
    Vector& operator[](std::size_t v) noexcept { return vectors[v]; }
    Vector above(std::size_t v) const noexcept { return v + 1 < COUNT ? vectors[v + 1] : zero(); }
    template <std::size_t FIRST = 0, typename Body>
    [[gnu::always_inline]] void forEach(Body body) const noexcept
    {
        [&]<std::size_t... v>(std::index_sequence<v...>) __attribute__((always_inline))
        {
            (body(v + FIRST), ...);
        }
        (std::make_index_sequence<COUNT - FIRST>());
    }
};

// Those of a long one, in the work area, with a vector of zeros above them.
template <>
struct Columns<0>
{
    Vector* const vectors;
    const std::size_t count;

    Columns(Digit* work, std::size_t size) noexcept : vectors(reinterpret_cast<Vector*>(work)), count(size)
    {
        vectors[count] = zero();
    }
    Vector& operator[](std::size_t v) noexcept { return vectors[v]; }
    Vector above(std::size_t v) const noexcept { return vectors[v + 1]; }
    template <std::size_t FIRST = 0, typename Body>
    [[gnu::always_inline]] void forEach(Body body) const noexcept
    {
        for (std::size_t v = FIRST; v < count; ++v) body(v);
    }
};

// Carries through all digits: the multiplication looks at 52 bits of a lane, and no more.
template <std::size_t COUNT>
[[gnu::always_inline]] inline void settle(Digit* r, Columns<COUNT>& columns) noexcept
{
    const Vector mask = _mm512_set1_epi64((1LL << wideDigit) - 1), ones = _mm512_set1_epi64(-1);
    Vector below = zero();
    unsigned carry = 0;
    columns.forEach([&](std::size_t v) {
        const Vector x = columns[v], up = _mm512_srli_epi64(x, wideDigit);
        const Vector y = add(_mm512_and_si512(x, mask), moveUp(below, up));
        below = up;
        // Now a lane carries 1 or nothing: 1 when it is over, or full and carried into. In the sum of the lanes' bits
        // carries run through full lanes as they do through the digits.
        const unsigned over = _mm512_cmpgt_epu64_mask(y, mask), full = _mm512_cmpeq_epu64_mask(y, mask);
        const unsigned into = 2 * over + full + carry;
        carry = into >> LANES;
        const Vector z = _mm512_mask_sub_epi64(y, static_cast<__mmask8>(into ^ full), y, ones);
        _mm512_storeu_si512(r + LANES * v, _mm512_and_si512(z, mask));
    });
}

std::size_t vectorsOf(const DigitModulus& modulus) noexcept
{
    return (modulus.digits + LANES - 1) / LANES;
}

// a and r may be b. COUNT vectors, or, for 0, any number.
template <std::size_t COUNT>
void productOf(Digit* r, const Digit* a, const Digit* b, const DigitModulus& modulus) noexcept
{
    const std::size_t count = COUNT ? COUNT : vectorsOf(modulus);
    const Digit* const multiple = modulus.spread; // (n c + 1) / 2^52
    const Digit* const n = multiple + LANES * count;
    const Digit* const c = n + LANES * count;
    Columns<COUNT> columns(modulus.work, count);
    columns.forEach([&](std::size_t v) { columns[v] = addLow(zero(), broadcast(a), load(b, v)); });

    // The digit cleared last. As it is written each row, no operand is taken to stay as it is, and kept in a register
    // or on the stack.
    Digit* const place = modulus.work + LANES * (count + 1);
    const auto keep = [place](Vector cleared) {
        _mm_store_si128(reinterpret_cast<__m128i*>(place), _mm512_castsi512_si128(cleared));
    };
    keep(zero());
    Vector lowest = columns[0];
    for (std::size_t i = 1; i < modulus.digits; ++i) {
        const Vector before = broadcast(place), digit = broadcast(a + i - 1), next = broadcast(a + i);
        const auto apart = [&](std::size_t v) {
            const Vector sum = addHigh(addLow(zero(), next, load(b, v)), digit, load(b, v));
            return addHigh(sum, before, load(multiple, v));
        };
        // What the register pressure allows: the carry is added before clear is made.
        Vector sum = apart(0);
        sum = add(sum, carryOfLowest(lowest));
        const Vector clear = spreadLowest(lowest);
        lowest = addLow(add(moveDown(lowest, columns.above(0)), sum), clear, load(multiple));
        columns.template forEach<1>([&](std::size_t v) {
            sum = addLow(apart(v), clear, load(multiple, v));
            columns[v] = add(moveDown(columns[v], columns.above(v)), sum);
        });
        keep(clear);
    }

    columns[0] = lowest;
    const Vector digit = broadcast(a + modulus.digits - 1), before = broadcast(place);
    const Vector clear = spreadLowest(addLow(zero(), lowest, broadcast(c)));
    columns.forEach([&](std::size_t v) { columns[v] = addLow(columns[v], clear, load(n, v)); });
    keep(clear);
    Vector carry = carryOfLowest(columns[0]);
    columns.forEach([&](std::size_t v) {
        Vector sum = addHigh(carry, digit, load(b, v));
        carry = zero();
        sum = addHigh(sum, before, load(multiple, v));
        sum = addHigh(sum, clear, load(n, v));
        columns[v] = add(moveDown(columns[v], columns.above(v)), sum);
    });
    settle(r, columns);
}

void product(Digit* r, const Digit* a, const Digit* b, const DigitModulus& modulus) noexcept
{
    switch (vectorsOf(modulus)) {
    case 1:
        return productOf<1>(r, a, b, modulus);
    case 2:
        return productOf<2>(r, a, b, modulus);
    case 3:
        return productOf<3>(r, a, b, modulus);
    default:
        return productOf<0>(r, a, b, modulus);
    }
}

} // namespace

const MontgomeryKernel montgomeryIfma = {LANES, true, product};

} // namespace toolbelt
