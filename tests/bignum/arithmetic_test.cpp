// Plain arithmetic through identities and residues, over operands that make carries and corrections run far.
#include "tests/bignum/numbers.h"

namespace toolbelt::test {
namespace {

TEST(BigNumArithmetic, SumsDifferencesAndShifts)
{
    Dice dice(1);
    for (int round = 0; round < 3000; ++round) {
        const Number a = dice.number(1 + dice.below(6)), b = dice.number(dice.below(6));
        const Number sum = run(bnAdd, a, b);
        ASSERT_EQ(residue(sum), (residue(a) + residue(b)) % residuePrime);
        ASSERT_EQ(run(bnSubtract, sum, b), a);
        ASSERT_EQ(run(bnSubtractWord, run(bnAddWord, a, ~std::uint64_t{0}), ~std::uint64_t{0}), a);
        // Shifting left multiplies by 2^bits; shifting right drops what division by 2^bits drops.
        const std::uint32_t bits = dice.below(300);
        Number power, quotient, rest;
        ASSERT_EQ(bnSetBit(power, bits), STATUS_OK);
        const Number up = run(bnShiftLeft, a, bits);
        ASSERT_EQ(up, run(bnMultiply, a, power)) << bits;
        ASSERT_EQ(run(bnShiftRight, up, bits), a) << bits;
        ASSERT_EQ(bnDivide(&quotient, rest, a, power), STATUS_OK);
        ASSERT_EQ(run(bnShiftRight, a, bits), quotient) << bits;
    }
    const Number ones(std::string(48, 'f')), three("03"), five("05");
    Number r;
    EXPECT_EQ(bnSubtract(r, three, five), BN_E_RANGE);
    EXPECT_EQ(bnSubtractWord(r, three, 5), BN_E_RANGE);
    EXPECT_EQ(hex(run(bnAddWord, ones, 1)), "01" + std::string(48, '0')) << "a carry runs to the top and out";
    EXPECT_EQ(run(bnSubtractWord, run(bnAddWord, ones, 1), 1), ones);
    EXPECT_EQ(hex(run(bnShiftRight, ones, 0xFFFFFFFF)), "00");
}

// Every pair of lengths around the border between the schoolbook core and Karatsuba's method, and some far above it.
TEST(BigNumArithmetic, ProductsOfEveryShape)
{
    Dice dice(2);
    const auto check = [&](std::uint32_t na, std::uint32_t nb) {
        Number a = dice.number(na), b = dice.number(nb);
        // Halves of zeros, and equal halves: differences that vanish.
        if (dice.below(3) == 0)
            for (std::uint32_t i = 0; i < na / 2; ++i) a.limbs[na - 1 - i] = dice.below(2) ? a.limbs[i] : 0;
        const Number product = run(bnMultiply, a, b), squared = run(bnMultiply, a, a);
        ASSERT_EQ(residue(product), residue(a) * residue(b) % residuePrime) << na << " x " << nb;
        ASSERT_EQ(residue(squared), residue(a) * residue(a) % residuePrime) << "square of " << na;
        ASSERT_EQ(bnCompare(squared, run(bnMultiply, a, run(bnAddWord, a, 0))), 0) << "square of " << na;
        ASSERT_EQ(bnCompare(product, run(bnMultiply, b, a)), 0) << na << " x " << nb;
    };
    for (std::uint32_t na = 0; na < 40; ++na)
        for (std::uint32_t nb = 0; nb < 40; ++nb) check(na, nb);
    for (int round = 0; round < 200; ++round) check(dice.below(300), dice.below(200));
    check(3000, 5);
    check(1, 3000);
}

// q n + r = a and r < n hold for one pair only.
void expectQuotient(const Number& a, const Number& n)
{
    Number q, r;
    ASSERT_EQ(bnDivide(&q, r, a, n), STATUS_OK);
    ASSERT_LT(bnCompare(r, n), 0) << hex(a) << " / " << hex(n);
    ASSERT_EQ(run(bnAdd, run(bnMultiply, q, n), r), a) << hex(a) << " / " << hex(n);
}

TEST(BigNumArithmetic, Quotients)
{
    Dice dice(3);
    for (int round = 0; round < 10000; ++round) {
        const Number b = run(bnShiftRight, dice.number(1 + dice.below(8)), dice.below(63)),
                     q = dice.number(dice.below(12));
        if (bnBitLength(b) == 0) continue;
        // A remainder close to the divisor makes estimates too large.
        const Number r = dice.below(2) ? run(bnSubtractWord, b, 1) : run(bnShiftRight, b, 1 + dice.below(70));
        expectQuotient(run(bnAdd, run(bnMultiply, q, b), r), b);
    }
    // All operands made of limbs at the edges: tops that are equal, guesses that the second limb lowers once, twice or
    // not at all, divisors added back.
    const std::uint64_t ones = ~std::uint64_t{0}, half = ones / 2 + 1;
    const std::uint64_t edges[] = {0, 1, half - 1, half, ones - 1, ones};
    const auto choose = [&](std::uint32_t limbs, std::uint32_t choice) {
        Number number(std::string(16 * limbs, '0'));
        for (std::uint32_t i = 0; i < limbs; ++i, choice /= 6) number.limbs[i] = edges[choice % 6];
        return number;
    };
    for (std::uint32_t divisor = 6; divisor < 216; ++divisor)
        for (std::uint32_t dividend = 0; dividend < 1296; dividend += divisor < 36 ? 1 : 5)
            expectQuotient(choose(4, dividend), choose(3, divisor));
}

TEST(BigNumArithmetic, TheLongestOperands)
{
    Dice dice(5);
    const Number longest = dice.number(32767), word = dice.number(1); // 65,534 words
    const std::uint64_t r = residue(longest);
    EXPECT_EQ(residue(run(bnMultiply, longest, longest)), r * r % residuePrime);
    EXPECT_EQ(residue(run(bnMultiply, longest, word)), r * residue(word) % residuePrime);
    EXPECT_EQ(residue(run(bnAdd, longest, longest)), 2 * r % residuePrime);
    const Number beyond = run(bnShiftLeft, longest, 64u); // 65,536 words: a value, but no operand
    Number out;
    for (const Status status : {bnAdd(out, beyond, word), bnAddWord(out, beyond, 1), bnSubtract(out, beyond, word),
                                bnSubtractWord(out, beyond, 1), bnMultiply(out, word, beyond),
                                bnMultiply(out, beyond, beyond), bnShiftLeft(out, beyond, 1),
                                bnShiftRight(out, beyond, 1), bnModulo(out, beyond, word), bnModulo(out, word, beyond)})
        EXPECT_EQ(status, BN_E_RANGE);
}

} // namespace
} // namespace toolbelt::test
