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
    std::uint32_t globalBlocks = 0;
    std::uint32_t allocations = 0;
    std::uint32_t failAt = 0;
    bool onwards = false;
    bool failed = false;
    std::uint32_t secretsReleased = 0;
    std::uint32_t unwiped = 0;
    std::uint32_t unknown = 0;
    std::uint32_t misplaced = 0;
    std::uint32_t plainGlobals = 0;
    std::uint32_t plain = 0;
    std::uint32_t secretsSeen = 0;
    std::unordered_set<std::uint64_t> watched; // each eight bytes of the secrets, in both orders
};

State* state = nullptr;
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
    ++state->allocations;
    if (state->failAt != 0 &&
        (state->allocations == state->failAt || (state->onwards && state->allocations > state->failAt))) {
        state->failed = true;
        return nullptr;
    }
    void* block = std::malloc(size ? size : 1);
    if (block) {
        std::memset(block, 0xA5, size); // contents are undefined: make it show
        state->blocks[block] = {size, global};
        state->globalBlocks += global;
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
        ++(found->second.global ? state->plainGlobals : state->plain);
        state->secretsSeen += showsSecret(bytes, found->second.size);
    } else {
        ++state->secretsReleased;
        for (std::size_t i = 0; i < found->second.size; ++i)
            if (bytes[i] != 0) {
                ++state->unwiped;
                break;
            }
    }
    state->blocks.erase(found);
    std::free(block);
}

constexpr heap::Backend backend = {allocate, release};

} // namespace

TestHeap::TestHeap()
{
    EXPECT_EQ(state, nullptr) << "test heaps do not nest";
    state = new State;
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
    state->allocations = 0;
    state->failAt = n;
    state->onwards = onwards;
    state->failed = false;
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

bool TestHeap::failed() const
{
    return state->failed;
}
std::uint32_t TestHeap::allocations() const
{
    return state->allocations;
}
std::uint32_t TestHeap::held() const
{
    return static_cast<std::uint32_t>(state->blocks.size());
}
std::uint32_t TestHeap::globalBlocks() const
{
    return state->globalBlocks;
}
std::uint32_t TestHeap::secretsReleased() const
{
    return state->secretsReleased;
}
std::uint32_t TestHeap::plainReleased() const
{
    return state->plain;
}

} // namespace toolbelt::test
