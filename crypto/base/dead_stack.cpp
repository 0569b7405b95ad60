#include "crypto/base/dead_stack.h"

#include "crypto/base/heap.h"

namespace toolbelt {

// Not checked for addresses: the area has to lie on the stack itself, with nothing around it.
[[gnu::noinline, gnu::no_sanitize_address]] void wipeDeadStack() noexcept
{
    unsigned char area[DEAD_STACK_BYTES];
    wipe(area, sizeof area);
}

[[gnu::noinline, gnu::no_sanitize_address]] void wipeShallowStack() noexcept
{
    unsigned char area[SHALLOW_STACK_BYTES];
    wipe(area, sizeof area);
}

} // namespace toolbelt
