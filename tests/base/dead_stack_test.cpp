// Frames that lie at the same place one after the other: what one leaves, the next one finds. Not for sanitizers, which
// put more between them.
#include "crypto/base/dead_stack.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace toolbelt {
namespace {

constexpr std::uint32_t SECRET = 0x5EC2E75A;
template <std::size_t WORDS>
[[gnu::noinline]] void leaveSecrets()
{
    std::uint32_t put[WORDS];
    for (std::uint32_t& word : put) word = SECRET;
    __asm__ __volatile__("" : : "m"(put));
}

template <std::size_t WORDS>
[[gnu::noinline]] std::size_t countSecrets()
{
    std::uint32_t found[WORDS];
    __asm__ __volatile__("" : "=m"(found)); // its contents are what is there
    std::size_t count = 0;
    for (const std::uint32_t word : found) count += word == SECRET;
    return count;
}

// What else the two frames hold is less than what is wiped beyond these words.
template <std::size_t WORDS>
void expectWiped(void (*wipeBelow)() noexcept)
{
    leaveSecrets<WORDS>();
    EXPECT_GE(countSecrets<WORDS>(), WORDS - 16) << "the probe sees nothing";
    leaveSecrets<WORDS>();
    wipeBelow();
    EXPECT_EQ(countSecrets<WORDS>(), 0u);
}

TEST(DeadStack, IsWipedBelowTheCaller)
{
    expectWiped<DEAD_STACK_BYTES / 4 - 32>(wipeDeadStack);
    expectWiped<SHALLOW_STACK_BYTES / 4 - 16>(wipeShallowStack);
}

} // namespace
} // namespace toolbelt
