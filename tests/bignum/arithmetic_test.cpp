// Arithmetic that is too long for the comparison with other arithmetic, or has none, by identities and residues over
// operands that make carries and corrections run far; where results may lie; inverses by the relation they solve.
#include "crypto/bignum/modular.h"
#include "tests/bignum/numbers.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {
namespace {

TEST(BigNumArithmetic, EndsOfTheRange)
{
    const Number ones(std::string(48, 'f')), three("03"), five("05");
    Number r;
    EXPECT_EQ(bnSubtract(r, three, five), BN_E_RANGE);
    EXPECT_EQ(bnSubtractWord(r, three, 5), BN_E_RANGE);
    EXPECT_EQ(hex(run(bnAddWord, ones, 1)), "01" + std::string(48, '0')) << "a carry runs to the top and out";
    EXPECT_EQ(run(bnSubtractWord, run(bnAddWord, ones, 1), 1), ones);
    EXPECT_EQ(hex(run(bnShiftRight, ones, 0xFFFFFFFF)), "00");
}

// Divisors whose quotients are found in blocks. A remainder of all but the divisor, and runs of ones in the quotient,
// make every remainder on the way begin like the divisor; a divisor with zeros behind its upper limbs, or ones, makes
// what these tell the best and the worst.
TEST(BigNumArithmetic, LongQuotients)
{
    Dice dice(6);
    for (std::uint32_t round = 0; round < 300; ++round) {
        const std::uint32_t size = 15 + dice.below(40), length = 1 + dice.below(30);
        Number divisor = dice.number(size), quotient = dice.number(length), rest;
        divisor.limbs[size - 1] |= std::uint64_t{round % 2} << 63;
        for (std::uint32_t i = 0; i < size - 8 && round % 3 != 0; ++i)
            divisor.limbs[i] = round % 3 == 1 ? 0 : ~std::uint64_t{0};
        for (std::uint32_t i = 0; i < length && round % 4 == 0; ++i) quotient.limbs[i] = ~std::uint64_t{0};
        rest = dice.below(2) ? run(bnSubtractWord, divisor, 1) : run(bnShiftRight, divisor, 1u + dice.below(900));
        const Number a = run(bnAdd, run(bnMultiply, divisor, quotient), rest);
        forEachTier([&] {
            Number q, r;
            ASSERT_EQ(bnDivide(&q, r, a, divisor), STATUS_OK);
            ASSERT_EQ(q, quotient) << hex(a) << " / " << hex(divisor);
            ASSERT_EQ(r, rest) << hex(a) << " / " << hex(divisor);
            ASSERT_EQ(run(bnModulo, a, divisor), rest);
        });
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
    const Number seven("07");
    for (const Status status : {bnModMultiply(out, word, seven, beyond), bnModExp(out, word, beyond, seven),
                                bnGcd(out, word, beyond), bnModInverse(out, beyond, seven)})
        EXPECT_EQ(status, BN_E_RANGE);
}

TEST(BigNumArithmetic, PairsOfPowers)
{
    Dice dice(8);
    for (std::uint32_t round = 0; round < 60; ++round) {
        const Number a = dice.number(dice.below(20)), b = dice.number(dice.below(20)), y = dice.number(dice.below(4));
        Number x = dice.number(dice.below(5)), n = dice.number(round == 1 ? 33 : 1 + round % 18);
        if (round % 18 == 0) n.limbs[0] >>= 20 + dice.below(43);
        n.limbs[0] |= round % 5 != 0 || n.limbs[0] == 0; // mostly odd
        if (round % 7 == 0) x.limbs[0] &= 1;
        const Number first = run(bnModExp, a, x, n, false);
        const Number expected = run(bnModMultiply, first, run(bnModExp, b, y, n, false), n);
        const Number expectedOfOne = run(bnModMultiply, first, run(bnModExp, a, y, n, false), n);
        forEachTier([&] {
            Number result = run(bnAddWord, y, 0);
            ASSERT_EQ(bnModExpPair(result, a, x, b, result, n), STATUS_OK);
            ASSERT_EQ(result, expected) << hex(a) << " ^ " << hex(x) << ", " << hex(b) << " ^ " << hex(y) << " mod "
                                        << hex(n);
            Number both = run(bnAddWord, a, 0); // both bases and the result
            ASSERT_EQ(bnModExpPair(both, both, x, both, y, n), STATUS_OK);
            ASSERT_EQ(both, expectedOfOne) << hex(a) << " ^ " << hex(x) << ", ^ " << hex(y) << " mod " << hex(n);
        });
    }
}

TEST(BigNumModular, ResultsInBorrowedAndSharedRecords)
{
    const Number b("123456789abcdef0123456789abcdef011"), e("fedcba9876543211"), n("c90fdaa22168c234c4c6628b80dc1cd1");
    Number window(std::string(64, 'f')), view;
    ASSERT_EQ(bnView(view, window, 1, 2), STATUS_OK);
    ASSERT_EQ(bnModExp(view, b, e, n), STATUS_OK);
    EXPECT_EQ(hex(window), std::string(16, 'f') + hex(run(bnModExp, b, e, n, true)) + std::string(16, 'f'));
    ASSERT_EQ(bnView(view, window, 1, 1), STATUS_OK);
    EXPECT_EQ(bnModExp(view, b, e, n), BN_E_RANGE);
    Number all("0fffffffffffffffffffffff");
    ASSERT_EQ(bnModExp(all, all, all, all), STATUS_OK);
    EXPECT_EQ(hex(all), "00");
}

TEST(BigNumModular, CoefficientsAndInverses)
{
    Dice dice(12);
    int signs[2] = {0, 0};
    const Number one("01"), zero;
    for (int round = 0; round < 1500; ++round) {
        const std::uint32_t limbs = round % 10 ? 6 : 40;
        Number a = round < 200 ? run(bnAddWord, zero, 1 + dice.below(12)) : dice.number(1 + dice.below(limbs));
        Number m = round < 100 ? run(bnAddWord, zero, 1 + dice.below(12)) : dice.number(1 + dice.below(limbs));
        // Quotients that are all 1, and, in between, one of any length: neighbours of a Fibonacci sequence.
        if (round % 5 == 1)
            for (std::uint32_t i = dice.below(600); i-- > 0; std::swap(a, m)) a = run(bnAdd, a, m);
        SignedBigNum x, y;
        Number inverse;
        const Status expected = run(bnGcd, a, m) == one ? STATUS_OK : BN_E_NO_INVERSE;
        ASSERT_EQ(bnExtendedGcd(x, &y, a, m), expected);
        ASSERT_EQ(bnModInverse(inverse, a, m), expected);
        if (expected != STATUS_OK) continue;
        // a x + m y = 1: the greater product is the other one and 1.
        const Number ax = run(bnMultiply, a, x.value), my = run(bnMultiply, m, y.value);
        ASSERT_EQ(x.negative   ? run(bnSubtract, my, ax)
                  : y.negative ? run(bnSubtract, ax, my)
                               : run(bnAdd, ax, my),
                  one)
            << hex(a) << ", " << hex(m);
        ++signs[x.negative];
        ASSERT_LT(bnCompare(inverse, m), 0);
        ASSERT_EQ(run(bnModMultiply, a, inverse, m), run(bnModulo, one, m));
    }
    EXPECT_TRUE(signs[0] > 50 && signs[1] > 50) << "the operands no longer reach every case";
}

TEST(BigNumModular, AnExponentiationAllocatesNothingPerProduct)
{
    Dice dice(8);
    const Number base = dice.number(4), n = dice.number(4), three("03"), longer(std::string(512, 'e'));
    n.limbs[0] |= 1;
    const auto allocations = [&](const BigNum& exponent) {
        TestHeap heap;
        BigNum r;
        EXPECT_EQ(bnModExp(r, base, exponent, n), STATUS_OK);
        return heap.allocations();
    };
    forEachTier([&] { EXPECT_EQ(allocations(three), allocations(longer)); });
}

} // namespace
} // namespace toolbelt::test
