// Failing allocations and wiping, of the operations that allocate.
#include <functional>

#include "crypto/bignum/modular.h"
#include "tests/bignum/numbers.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {
namespace {

TEST(BigNumMemory, FailuresAreReportedAndEveryArrayIsWiped)
{
    Dice dice(7);
    const Number a = dice.number(40), b = dice.number(20), n = dice.number(3), e("1f3f"), three("03"), seven("07");
    n.limbs[0] |= 1;
    const std::uint8_t bytes[9] = {1};
    const std::function<Status(BigNum&)> operations[] = {
        [&](BigNum& r) { return bnImport(r, bytes, 9); },
        [&](BigNum& r) { return bnCopy(r, a); },
        [&](BigNum& r) { return bnView(r, a, 40); },
        [&](BigNum& r) { return bnSetBit(r, 500); },
        [&](BigNum& r) { return bnRandom(r, 20); },
        [&](BigNum& r) { return bnAdd(r, a, b); },
        [&](BigNum& r) { return bnSubtractWord(r, a, 1); },
        [&](BigNum& r) { return bnMultiply(r, a, b); },
        [&](BigNum& r) { return bnShiftLeft(r, a, 70); },
        [&](BigNum& r) { return bnShiftRight(r, a, 70); },
        [&](BigNum& r) { return bnDivide(&r, r, a, b); },
        [&](BigNum& r) { return bnModMultiply(r, a, b, n); },
        [&](BigNum& r) { return bnModExp(r, a, e, n); },
        [&](BigNum& r) { return bnModExp(r, a, e, n, true); },
        [&](BigNum& r) { return bnGcd(r, a, n); },
        [&](BigNum& r) { return bnModInverse(r, three, seven); },
        [&](BigNum& r) {
            SignedBigNum x, y;
            const Status status = bnExtendedGcd(x, &y, three, seven);
            return status == STATUS_OK ? bnCopy(r, y.value) : status;
        },
    };
    for (std::size_t i = 0; i < std::size(operations); ++i) {
        SCOPED_TRACE(i);
        const std::uint32_t injected = forEachFailingAllocation([&](TestHeap& heap) {
            {
                BigNum result;
                const Status status = operations[i](result);
                EXPECT_EQ(status, heap.failed() ? BN_E_MEMORY : STATUS_OK);
            }
            if (heap.failed()) return;
            EXPECT_EQ(heap.secretsReleased(), heap.allocations()) << "a block was released unwiped";
        });
        EXPECT_GT(injected, 1u);
    }
    TestHeap heap;
    heap.failAt(1, true);
    BigNum none;
    EXPECT_EQ(bnResize(none, 0xFFFFFFFF), BN_E_MEMORY);
    EXPECT_EQ(bnImportPrefixed(none, bytes + 1, 4), 0u);
    EXPECT_EQ(bnImportPrefixed(none, bytes + 1, 2), 2u) << "the bare zero is read all the same";
    EXPECT_TRUE(none.count == 0 && none.limbs == nullptr);
}

} // namespace
} // namespace toolbelt::test
