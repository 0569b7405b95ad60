// Every tier of the Montgomery product and of the schoolbook product, on operands that make digits, columns and carries
// as large as they get. Expected values come from the portable products and from division.
#include "crypto/bignum/digits.h"
#include "crypto/bignum/modular.h"
#include "crypto/bignum/montgomery.h"
#include "crypto/bignum/prime_table_batch.h"
#include "tests/bignum/numbers.h"

namespace toolbelt::test {
namespace {

Number powerOfTwo(std::uint32_t bit)
{
    Number number;
    EXPECT_EQ(bnSetBit(number, bit), STATUS_OK);
    return number;
}

// Odd moduli of that many bits: just below and above a power of two, with runs of zeros and ones, random. Of very long
// ones only the largest.
std::vector<Number> moduli(std::uint32_t bits, Dice& dice)
{
    std::vector<Number> result;
    result.push_back(run(bnSubtractWord, powerOfTwo(bits), 1));
    result.push_back(run(bnSubtractWord, powerOfTwo(bits), 59));
    if (bits > 10000) return result;
    result.push_back(run(bnAddWord, powerOfTwo(bits - 1), 1));
    for (int i = 0; i < 2; ++i) {
        Number n = run(bnAdd, powerOfTwo(bits - 1), run(bnShiftRight, dice.number(bits / 64 + 1), 65 - bits % 64));
        n.limbs[0] |= 1;
        result.push_back(std::move(n));
    }
    return result;
}

TEST(BigNumTiers, PowersAgreeWithPlainOnes)
{
    Dice dice(21);
    for (const std::uint32_t bits : {33,  49,  50,  64,   65,   82,   83,   128,  191,  193,  413,  414,  447,  512,
                                     513, 829, 830, 1023, 1024, 1025, 1245, 1246, 2048, 2077, 3330, 3331, 4096, 4200}) {
        for (const Number& n : moduli(bits, dice)) {
            // Windows of six bits that begin with zeros, end short and end full.
            const Number exponent =
                run(bnShiftRight, dice.number(bits < 600 ? 3 : 1), dice.below(bits < 1100 ? 30 : 45));
            for (const Number& base :
                 {run(bnSubtractWord, n, 1), run(bnShiftRight, n, 1), dice.number(bits / 64 + 2)}) {
                const Number expected = run(bnModExp, base, exponent, n, true);
                forEachTier([&] {
                    ASSERT_EQ(run(bnModExp, base, exponent, n, false), expected)
                        << hex(base) << " ^ " << hex(exponent) << " mod " << hex(n);
                });
            }
        }
    }
}

// A product r of a and b solves r R = a b modulo n, R being the power of two that the tier divides by, and stays in the
// bound that it grants its operands.
TEST(BigNumTiers, ProductsOfTheLargestValuesAndDigits)
{
    Dice dice(22);
    for (const std::uint32_t bits :
         {33, 49, 85, 96, 512, 1024, 1245, 2000, 2077, 3330, 4200, 13255, 51452, 51453, 53193, 53194}) {
        for (const Number& n : moduli(bits, dice)) {
            forEachTier([&] {
                MontgomeryContext context(n);
                ASSERT_EQ(context.build(), STATUS_OK);
                const std::uint32_t longest = cpu::has(cpu::IFMA) ? 53193 : cpu::has(cpu::SSE2) ? 51452 : 0;
                ASSERT_EQ(context.kernel != nullptr, bits <= longest);
                if (context.kernel == nullptr) return;
                const DigitModulus& digits = context.digits;
                const std::size_t d = digits.digits;
                const Number r = powerOfTwo(static_cast<std::uint32_t>(digits.bits * d));
                const auto value = [&](auto fill) {
                    Number array;
                    EXPECT_EQ(detail::resizeLimbs(array, context.size), STATUS_OK);
                    fill(array.limbs);
                    return array;
                };
                const auto number = [&](const Number& array) {
                    Number result;
                    EXPECT_EQ(fromDigits(result, array.limbs, d, digits.bits), STATUS_OK);
                    return result;
                };
                // The largest value, and all digits but the upper ones at their bound.
                const bool wide = context.kernel->wide;
                const Digit mask = (Digit{1} << digits.bits) - 1;
                Number c("02");
                if (!wide) c.limbs[0] = context.inverseN.limbs[0] & mask;
                const Number most = run(bnSubtractWord, run(bnShiftLeft, run(bnMultiply, n, c), 1u), 1);
                const Digit bound = wide ? mask : mask + 1 + (Digit{1} << (64 - 2 * digits.bits));
                const std::size_t full = bits > 3 * digits.bits ? bits / digits.bits - 2 : bits > digits.bits;
                const Number values[] = {
                    value([&](Digit* x) { toDigits(x, d, digits.bits, most); }),
                    value([&](Digit* x) { std::fill(x, x + full, bound); }),
                    value([&](Digit* x) { toDigits(x, d, digits.bits, run(bnSubtractWord, n, 1)); }),
                };
                for (const Number& a : values)
                    for (const Number& b : values) {
                        const Number product = value([](Digit*) {});
                        context.product(product.limbs, a.limbs, b.limbs);
                        const Number result = number(product);
                        ASSERT_LE(bnCompare(result, most), 0) << hex(n);
                        for (std::size_t i = 0; i < d; ++i) ASSERT_LE(product.limbs[i], bound);
                        ASSERT_EQ(run(bnModMultiply, result, r, n), run(bnModMultiply, number(a), number(b), n))
                            << hex(n);
                    }
            });
        }
    }
}

TEST(BigNumTiers, SchoolbookProducts)
{
    Dice dice(23);
    const Number ones(std::string(272, 'f'));
    for (std::uint32_t na = 1; na <= 17; ++na)
        for (std::uint32_t nb = 1; nb <= 17; ++nb)
            for (int round = 0; round < 4; ++round) {
                const auto operand = [&](std::uint32_t limbs, bool full) {
                    return full ? run(bnShiftRight, ones, 1088 - 64 * limbs) : dice.number(limbs);
                };
                const Number a = operand(na, round == 0), b = operand(nb, round <= 1);
                std::vector<std::string> products, squares;
                forEachTier([&] {
                    products.push_back(hex(run(bnMultiply, a, b)));
                    squares.push_back(hex(run(bnMultiply, a, a)));
                });
                for (std::size_t i = 1; i < products.size(); ++i)
                    ASSERT_TRUE(products[i] == products[0] && squares[i] == squares[0]) << hex(a) << " * " << hex(b);
            }
}

// Eight rounds side by side, of the smallest and the largest candidates and of Carmichael numbers: bit i is set when
// the power of witness i is 1.
TEST(BigNumTiers, FermatRoundsAreThePowers)
{
    Dice dice(24);
    const auto word = [](std::uint32_t value) { return run(bnAddWord, Number("00"), value); };
    for (const std::uint32_t first : {3u, 15u, 561u, 1105u, 65521u, 16777213u, 536870909u, fermatBatchLimit - 1}) {
        std::uint32_t witnesses[fermatBatch], expected = 0;
        for (std::uint32_t i = 0; i < fermatBatch; ++i) {
            const std::uint32_t n = first + 2 * i;
            witnesses[i] = i % 4 == 0 ? n - 1 : i % 4 == 1 ? 2 : 1 + dice.below(n - 1);
            const Number power = run(bnModExp, word(witnesses[i]), word(n - 1), word(n), true);
            expected |= std::uint32_t{bnCompareWord(power, 1) == 0} << i;
        }
        if (cpu::has(cpu::SSE2)) {
            EXPECT_EQ(fermatRoundsSse2(first, witnesses), expected) << first;
        }
        if (cpu::has(cpu::AVX2)) {
            EXPECT_EQ(fermatRoundsAvx2(first, witnesses), expected) << first;
        }
    }
}

} // namespace
} // namespace toolbelt::test
