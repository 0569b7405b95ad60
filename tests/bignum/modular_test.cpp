// Modular arithmetic: moduli at the border of what is allowed, and inverses through the relation they solve.
#include "crypto/bignum/modular.h"
#include "tests/bignum/numbers.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {
namespace {

TEST(BigNumModular, SmallEvenAndDegenerateModuli)
{
    const Number zero, one("01"), two("02"), three("03"), seven("07"), ten("0a"), even("0100000000");
    Number r;
    for (const bool plain : {false, true}) {
        EXPECT_EQ(run(bnModExp, three, zero, seven, plain), one);
        EXPECT_EQ(run(bnModExp, seven, zero, one, plain), one) << "exponent 0 gives 1 modulo 1 too";
        EXPECT_EQ(run(bnModExp, seven, one, one, plain), zero);
        EXPECT_EQ(hex(run(bnModExp, seven, ten, even, plain)), "10d63af1"); // 282475249
        EXPECT_EQ(bnModExp(r, three, zero, zero, plain), BN_E_RANGE);
    }
    EXPECT_EQ(run(bnModMultiply, ten, ten, seven), two);
    EXPECT_EQ(bnModMultiply(r, two, three, zero), BN_E_RANGE);
    Number tooLong;
    ASSERT_EQ(bnSetBit(tooLong, 64 * 32767), STATUS_OK);
    EXPECT_EQ(bnModMultiply(r, two, three, tooLong), BN_E_RANGE);
    EXPECT_EQ(bnModExp(r, two, tooLong, seven), BN_E_RANGE);
    EXPECT_EQ(bnGcd(r, two, tooLong), BN_E_RANGE);
    EXPECT_EQ(bnModInverse(r, tooLong, seven), BN_E_RANGE);
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
    int negative[2] = {0, 0}, none = 0;
    const Number one("01"), zero;
    for (int round = 0; round < 1500; ++round) {
        const std::uint32_t limbs = round % 10 ? 6 : 40;
        Number a = round < 200 ? run(bnAddWord, zero, 1 + dice.below(12)) : dice.number(1 + dice.below(limbs));
        Number m = round < 100 ? run(bnAddWord, zero, 1 + dice.below(12)) : dice.number(1 + dice.below(limbs));
        // Quotients that are all 1, and, in between, one of any length: neighbours of a Fibonacci sequence.
        if (round % 5 == 1)
            for (std::uint32_t i = dice.below(600); i-- > 0; std::swap(a, m)) a = run(bnAdd, a, m);
        SignedBigNum x, y;
        Number r;
        const Status status = bnExtendedGcd(x, &y, a, m);
        if (!(run(bnGcd, a, m) == one)) {
            ASSERT_EQ(status, BN_E_NO_INVERSE);
            ASSERT_EQ(bnModInverse(r, a, m), BN_E_NO_INVERSE);
            ++none;
            continue;
        }
        ASSERT_EQ(status, STATUS_OK);
        // a x + m y = 1, the negative term moved to the other side.
        const Number ax = run(bnMultiply, a, x.value), my = run(bnMultiply, m, y.value);
        ASSERT_FALSE(x.negative && y.negative);
        ++negative[x.negative];
        ASSERT_EQ(x.negative   ? run(bnSubtract, my, ax)
                  : y.negative ? run(bnSubtract, ax, my)
                               : run(bnAdd, ax, my),
                  one)
            << hex(a) << ", " << hex(m);
        const Number inverse = run(bnModInverse, a, m);
        ASSERT_LT(bnCompare(inverse, m), 0);
        ASSERT_EQ(run(bnModMultiply, a, inverse, m), run(bnModulo, one, m));
    }
    EXPECT_TRUE(negative[0] > 50 && negative[1] > 50 && none > 50) << "the operands no longer reach every case";
    Number r;
    EXPECT_EQ(bnModInverse(r, zero, one), BN_E_RANGE);
    EXPECT_EQ(bnModInverse(r, one, zero), BN_E_RANGE);
    EXPECT_EQ(run(bnGcd, zero, one), one);
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
