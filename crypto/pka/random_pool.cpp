// The random pool. Each byte is handed out once, and is gone from the pool afterwards.
#include "crypto/pka/random_pool.h"

#include <cstring>

#include "crypto/base/heap.h"

namespace toolbelt {
namespace {

struct Pool
{
    std::uint8_t* start = nullptr;
    std::uint32_t size = 0;
    std::uint32_t position = 0;
    std::uint32_t shortfall = 0;
};
Pool pool;

} // namespace

void setRandomPool(std::uint8_t* bytes, std::uint32_t size)
{
    pool = {bytes, bytes ? size : 0, 0, 0};
}

void resetRandomPool()
{
    if (pool.start) wipe(pool.start + pool.position, pool.size - pool.position);
    pool = {};
}

std::uint32_t randomPoolShortfall()
{
    return pool.shortfall;
}

Status takeRandom(std::uint8_t* output, std::uint32_t size)
{
    if (pool.size - pool.position < size) {
        pool.shortfall = size;
        return PKA_E_RANDOM;
    }
    if (size == 0) return STATUS_OK;
    std::uint8_t* const next = pool.start + pool.position;
    std::memcpy(output, next, size);
    wipe(next, size);
    pool.position += size;
    return STATUS_OK;
}

} // namespace toolbelt
