// Faults on purpose: CTest runs each, and its check passes only when the fault is caught and called by its name.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "crypto/bignum/bignum.h"
#include "tests/robust/operations.h"

namespace toolbelt::test {
namespace {

TEST(Fault, Overrun)
{
    std::uint8_t* const block = new std::uint8_t[7];
    BigNum number;
    EXPECT_EQ(bnImport(number, block, 8), STATUS_OK); // reads a byte behind it
    delete[] block;
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
