// Backends for the library's door to memory: a heap that fails on purpose, that checks that secrets were wiped, and
// that counts what is still held. Put one on the stack around the operation under test.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

#include "crypto/base/heap.h"

namespace toolbelt::test {

class TestHeap
{
public:
    // Of the heap that lives: they do not nest.
    static inline struct Counts
    {
        std::uint32_t allocations, globalBlocks, held, secretsReleased, plainReleased;
        bool failed;
    } counts;

    // From now on this heap serves the library; the one before comes back with the destructor, which fails the running
    // test when a block is still held, was released twice or to the other heap, when a secret block was not all zero,
    // or when one of the global heap was not released as a secret.
    TestHeap();
    ~TestHeap();
    TestHeap(const TestHeap&) = delete;
    TestHeap& operator=(const TestHeap&) = delete;

    // The n-th allocation from now on fails (1: the next one; 0: none), and, when onwards is set, all after it.
    void failAt(std::uint32_t n, bool onwards = false);
    // No allocation fails any more; what failed() says stays.
    void recover();
    // Whether an allocation was made to fail since failAt.
    bool failed() const { return counts.failed; }
    // Allocations since the heap was put in place or failAt was called.
    std::uint32_t allocations() const { return counts.allocations; }
    // Blocks taken from the system's global heap so far.
    std::uint32_t globalBlocks() const { return counts.globalBlocks; }
    // Blocks held now, and blocks that were released wiped so far.
    std::uint32_t held() const { return counts.held; }
    std::uint32_t secretsReleased() const { return counts.secretsReleased; }
    // Blocks that were released as they are so far. With watch(), they fail the test when they hold eight bytes in a
    // row of what is watched, in either order.
    std::uint32_t plainReleased() const { return counts.plainReleased; }
    void watch(const void* secret, std::size_t size);
};

} // namespace toolbelt::test
