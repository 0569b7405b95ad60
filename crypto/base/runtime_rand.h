// The C library's rand() of the Windows runtime: state = state * 214013 + 2531011, result bits 16..30, one state a
// thread. Predictable: it serves padding bytes and primality witnesses, never key material.
#pragma once

#include <cstdint>

namespace toolbelt {

// Seeds the calling thread's generator; a thread that never seeds starts from 1. On Windows this is the C runtime's own
// state, so an application on the same runtime sees its rand() move in that thread.
void runtimeSrand(std::uint32_t seed) noexcept;
// The next value, 0 to 32767.
int runtimeRand() noexcept;

} // namespace toolbelt
