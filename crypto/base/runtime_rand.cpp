#include "crypto/base/runtime_rand.h"

#if defined(_WIN32)
#include <cstdlib>
#endif

namespace toolbelt {

#if defined(_WIN32)
void runtimeSrand(std::uint32_t seed) noexcept
{
    std::srand(seed);
}
int runtimeRand() noexcept
{
    return std::rand();
}
#else
// Elsewhere the same generator is written out, so that both builds draw the same witnesses.
namespace {
thread_local std::uint32_t state = 1;
}
void runtimeSrand(std::uint32_t seed) noexcept
{
    state = seed;
}
int runtimeRand() noexcept
{
    state = state * 214013u + 2531011u;
    return static_cast<int>(state >> 16 & 0x7FFF);
}
#endif

} // namespace toolbelt
