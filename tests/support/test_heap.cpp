#include "tests/support/test_heap.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <unordered_set>

namespace toolbelt::test {
namespace {

struct State
{
    std::mutex mutex; // key generation allocates from several threads
    struct Block
    {
        std::size_t size;
        bool global;
    };
    std::map<void*, Block> blocks;
    std::uint32_t failAt = 0;
    bool onwards = false;
    std::uint32_t unwiped = 0, unknown = 0, misplaced = 0, plainGlobals = 0, secretsSeen = 0; // faults
    std::unordered_set<std::uint64_t> watched; // each eight bytes of the secrets, in both orders
};

State* state = nullptr;
TestHeap::Counts& counts = TestHeap::counts;
const heap::Backend* previous = nullptr;

bool showsSecret(const std::uint8_t* bytes, std::size_t size)
{
    std::uint64_t window = 0;
    for (std::size_t i = 0; i < size && !state->watched.empty(); ++i) {
        window = window << 8 | bytes[i];
        if (i >= 7 && state->watched.contains(window)) return true;
    }
    return false;
}

void* allocate(std::size_t size, bool global) noexcept
{
    const std::lock_guard lock(state->mutex);
    ++counts.allocations;
    if (state->failAt != 0 &&
        (counts.allocations == state->failAt || (state->onwards && counts.allocations > state->failAt))) {
        counts.failed = true;
        return nullptr;
    }
    void* block = std::malloc(size ? size : 1);
    if (block) {
        std::memset(block, 0xA5, size); // contents are undefined: make it show
        state->blocks[block] = {size, global};
        ++counts.held;
        counts.globalBlocks += global;
    }
    return block;
}

void release(void* block, std::size_t secretSize, bool global) noexcept
{
    const std::lock_guard lock(state->mutex);
    const auto found = state->blocks.find(block);
    if (found == state->blocks.end()) {
        ++state->unknown;
        return;
    }
    if (found->second.global != global) ++state->misplaced;
    // A secret block is wiped over all that was asked for, not over a part of it. One of the global heap always is a
    // secret: it may hold decoded keys.
    const auto* bytes = static_cast<const std::uint8_t*>(block);
    if (secretSize == 0) {
        ++(found->second.global ? state->plainGlobals : counts.plainReleased);
        state->secretsSeen += showsSecret(bytes, found->second.size);
    } else {
        ++counts.secretsReleased;
        for (std::size_t i = 0; i < found->second.size; ++i)
            if (bytes[i] != 0) {
                ++state->unwiped;
                break;
            }
    }
    state->blocks.erase(found);
    --counts.held;
    std::free(block);
}

constexpr heap::Backend backend = {allocate, release};

} // namespace

TestHeap::TestHeap()
{
    EXPECT_EQ(state, nullptr) << "test heaps do not nest";
    state = new State;
    counts = {};
    previous = heap::setBackend(&backend);
}

TestHeap::~TestHeap()
{
    heap::setBackend(previous);
    EXPECT_EQ(state->blocks.size(), 0u) << "blocks were not released";
    EXPECT_EQ(state->unwiped, 0u) << "blocks were released as secrets without being wiped over their whole size";
    EXPECT_EQ(state->unknown, 0u) << "blocks were released twice or never allocated";
    EXPECT_EQ(state->misplaced, 0u) << "blocks went back to the other heap";
    EXPECT_EQ(state->secretsSeen, 0u) << "blocks were released as they are with a watched secret in them";
    EXPECT_EQ(state->plainGlobals, 0u) << "blocks of the global heap were not released as secrets";
    for (const auto& [block, what] : state->blocks) std::free(block);
    delete state;
    state = nullptr;
}

void TestHeap::failAt(std::uint32_t n, bool onwards)
{
    const std::lock_guard lock(state->mutex);
    counts.allocations = 0;
    state->failAt = n;
    state->onwards = onwards;
    counts.failed = false;
}

void TestHeap::recover()
{
    const std::lock_guard lock(state->mutex);
    state->failAt = 0;
}

void TestHeap::watch(const void* secret, std::size_t size)
{
    const auto* bytes = static_cast<const std::uint8_t*>(secret);
    for (std::size_t at = 0; at + 8 <= size; ++at) {
        std::uint64_t forwards = 0, backwards = 0;
        for (std::size_t i = 0; i < 8; ++i) {
            forwards = forwards << 8 | bytes[at + i];
            backwards = backwards << 8 | bytes[at + 7 - i];
        }
        if (forwards != 0) state->watched.insert({forwards, backwards});
    }
}

} // namespace toolbelt::test
