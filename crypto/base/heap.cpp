#include "crypto/base/heap.h"

#include <cstdlib>
#include <cstring>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace toolbelt {

void wipe(void* block, std::size_t size) noexcept
{
    if (block == nullptr || size == 0) return;
    std::memset(block, 0, size);
    // The barrier makes the zeros visible to code the compiler cannot see, so the store above is never dead.
    __asm__ __volatile__("" : : "r"(block) : "memory");
}

namespace heap {
namespace {

void* systemAllocate(std::size_t size, bool global) noexcept
{
    if (size == 0) size = 1;
#if defined(_WIN32)
    if (global) return GlobalAlloc(GMEM_FIXED, size);
#else
    (void)global;
#endif
    return std::malloc(size);
}

void systemRelease(void* block, std::size_t, bool global) noexcept
{
#if defined(_WIN32)
    if (global) {
        GlobalFree(block);
        return;
    }
#else
    (void)global;
#endif
    std::free(block);
}

constexpr Backend systemBackend = {systemAllocate, systemRelease};
const Backend* current = &systemBackend;

} // namespace

const Backend* setBackend(const Backend* backend) noexcept
{
    return std::exchange(current, backend ? backend : &systemBackend);
}

void* allocate(std::size_t size) noexcept
{
    return current->allocate(size, false);
}

void release(void* block) noexcept
{
    if (block) current->release(block, 0, false);
}

void releaseSecret(void* block, std::size_t size) noexcept
{
    if (block == nullptr) return;
    wipe(block, size);
    current->release(block, size, false);
}

void* globalAllocate(std::size_t size) noexcept
{
    return current->allocate(size, true);
}

void globalReleaseSecret(void* block, std::size_t size) noexcept
{
    if (block == nullptr) return;
    wipe(block, size);
    current->release(block, size, true);
}

} // namespace heap
} // namespace toolbelt
