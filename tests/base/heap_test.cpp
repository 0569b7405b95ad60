#include "crypto/base/heap.h"

#include <cstring>
#include <memory>

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "tests/support/test_heap.h"

namespace toolbelt {
namespace {

struct Node : HeapObject
{
    std::uint64_t value[4] = {};
};

TEST(Heap, ObjectsAndArraysComeFromTheDoorAndReportWhenItIsShut)
{
    for (std::uint32_t n = 1; n <= 3; ++n) {
        test::TestHeap heap;
        heap.failAt(n);
        const std::unique_ptr<Node> node(new (std::nothrow) Node);
        const SecretBytes bytes(100);
        EXPECT_EQ(node == nullptr, n == 1);
        EXPECT_EQ(bytes.size(), n == 2 ? 0u : 100u);
        EXPECT_EQ(heap.failed(), n < 3);
    }
    EXPECT_FALSE(SecretArray<std::uint64_t>(std::size_t(-1) / 8)) << "a size that overflows is no memory";
}

TEST(Heap, SecretsAreZeroWhenTheyAreReleased)
{
    {
        test::TestHeap heap;
        SecretBytes bytes(33);
        for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = 0xFF;
        SecretBytes moved(std::move(bytes));
        EXPECT_EQ(moved[32], 0xFF);
        void* global = heap::globalAllocate(8);
        std::memset(global, 1, 8);
        heap::globalReleaseSecret(global, 8);
        EXPECT_EQ(heap.secretsReleased(), 1u);
    }
    std::uint32_t secret[4] = {1, 2, 3, 4};
    {
        const WipeOnExit guard(secret);
    }
    EXPECT_EQ(secret[0] | secret[1] | secret[2] | secret[3], 0u);
}

// The checks of the test heap must be able to fail: each fault is committed on purpose.
TEST(Heap, TestHeapNoticesLeaksAndUnwipedSecrets)
{
    static void (*commit)();
    static constexpr char WATCHED[] = "key material";
    const std::pair<void (*)(), const char*> faults[] = {
        {[] { (void)heap::allocate(1); }, "not released"},
        {[] { heap::releaseSecret(heap::allocate(16), 15); }, "without being wiped"},
        {[] { heap::releaseSecret(heap::globalAllocate(16), 16); }, "the other heap"},
        {[] { heap::globalReleaseSecret(heap::globalAllocate(16), 0); }, "not released as secrets"},
        {[] { heap::release(&commit); }, "never allocated"},
        {[] { heap::release(std::strcpy(static_cast<char*>(heap::allocate(16)), WATCHED)); },
         "a watched secret in them"},
    };
    for (const auto& [fault, message] : faults) {
        commit = fault;
        EXPECT_NONFATAL_FAILURE(
            {
                test::TestHeap heap;
                heap.watch(WATCHED, sizeof WATCHED);
                commit();
            },
            message);
    }
}

} // namespace
} // namespace toolbelt
