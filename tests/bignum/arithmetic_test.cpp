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

// Operands that Karatsuba's method splits many times; shorter ones are compared with other arithmetic.
TEST(BigNumArithmetic, LongProducts)
{
    Dice dice(2);
    for (std::uint32_t round = 0; round < 202; ++round) {
        const std::uint32_t na = round < 200 ? dice.below(300) : round == 200 ? 3000 : 1;
        Number a = dice.number(na), b = dice.number(round < 200 ? dice.below(200) : round == 200 ? 5 : 3000);
        // Halves of zeros, and equal halves: differences that vanish.
        if (dice.below(3) == 0)
            for (std::uint32_t i = 0; i < na / 2; ++i) a.limbs[na - 1 - i] = dice.below(2) ? a.limbs[i] : 0;
        const Number product = run(bnMultiply, a, b), squared = run(bnMultiply, a, a);
        ASSERT_EQ(residue(product), residue(a) * residue(b) % residuePrime) << round;
        ASSERT_EQ(residue(squared), residue(a) * residue(a) % residuePrime) << round;
        ASSERT_EQ(squared, run(bnMultiply, a, run(bnAddWord, a, 0))) << "of two records: no squaring";
        ASSERT_EQ(product, run(bnMultiply, b, a)) << round;
    }
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
