// Frames that lie at the same place one after the other: what one leaves, the next one finds. Not for sanitizers, which
// put more between them.
#include "crypto/base/dead_stack.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace toolbelt {
namespace {

constexpr std::uint32_t SECRET = 0x5EC2E75A;
constexpr std::size_t WORDS = 480; // and what else these two frames hold is less than what is wiped

[[gnu::noinline]] void leaveSecrets()
{
    std::uint32_t put[WORDS];
    for (std::uint32_t& word : put) word = SECRET;
    __asm__ __volatile__("" : : "m"(put));
}

[[gnu::noinline]] std::size_t countSecrets()
{
    std::uint32_t found[WORDS];
    __asm__ __volatile__("" : "=m"(found)); // its contents are what is there
    std::size_t count = 0;
    for (const std::uint32_t word : found) count += word == SECRET;
    return count;
}

TEST(DeadStack, IsWipedBelowTheCaller)
{
    leaveSecrets();
    EXPECT_GE(countSecrets(), WORDS - 16) << "the probe sees nothing";
    leaveSecrets();
    wipeDeadStack();
    EXPECT_EQ(countSecrets(), 0u);
}

} // namespace
} // namespace toolbelt
