// Faults on purpose: CTest runs each, and its check passes only when the fault is caught and called by its name.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "crypto/bignum/bignum.h"
#include "tests/robust/operations.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {
namespace {

TEST(Fault, Leak)
{
    TestHeap heap;
    new BigNum; // the library's own:
    EXPECT_NE(heap::allocate(100), nullptr);
}

TEST(Fault, Unwiped)
{
    TestHeap heap;
    BigNum secret;
    ASSERT_EQ(bnResize(secret, 64), STATUS_OK);
    secret.limbs[7] = 1;
    --secret.count; // so the last limb is not wiped
}

TEST(Fault, Watched)
{
    TestHeap heap;
    heap.watch("key material", 12);
    char* const block = static_cast<char*>(heap::allocate(16));
    std::copy_n("key material", 12, block);
    heap::release(block);
}

TEST(Fault, Overrun)
{
    std::uint8_t* const block = new std::uint8_t[7];
    BigNum number;
    EXPECT_EQ(bnImport(number, block, 8), STATUS_OK); // reads a byte behind it
    delete[] block;
}

TEST(Fault, Status)
{
    BigNum difference, one;
    ASSERT_EQ(bnAddWord(one, one, 1), STATUS_OK);
    EXPECT_EQ(bnSubtractWord(difference, one, 2), STATUS_OK) << "a negative result";
}

TEST(Fault, Loop)
{
    runWithoutMemory({"an operation that hides a failure",
                      [](TestHeap&) {
                          heap::release(heap::allocate(16));
                          return STATUS_OK;
                      },
                      {{BN_E_MEMORY}}});
}

TEST(Fault, Hang)
{
    for (;;) std::this_thread::sleep_for(std::chrono::seconds(1));
}

// A program that crashes under Wine may end with exit code 0.
TEST(Fault, Vanished)
{
    std::_Exit(0);
}

TEST(Fault, Skipped)
{
    GTEST_SKIP();
}
TEST(Fault, SkippedBesideOneThatPasses) {}

} // namespace
} // namespace toolbelt::test
