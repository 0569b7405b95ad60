// Whether a 32-bit process runs on a 64-bit system.
#pragma once

#include <atomic>
#include <cstdint>

#include "crypto/base/export.h"

namespace toolbelt {

// Asks the system about a process, given the handle of its kernel library ("kernel32.dll"), and keeps the answer for
// wow64Answer. Returns 0 without a module, else what the system's test returns; a system that has no such test is not
// asked: the answer is no, and the result 1.
TB_API std::int32_t IsWow64(void* kernelModule, void* process) noexcept;
// The process-wide answer: 1 for 32-on-64. 0 before the first call of IsWow64.
TB_API std::int32_t wow64Answer() noexcept;

// What IsWow64 keeps: the test's address, looked up once, and the answer. Threads that come first at the same time look
// the same address up.
struct Wow64Test
{
    std::atomic<bool> lookedUp = false;
    std::atomic<void*> function = nullptr;
    std::atomic<std::int32_t> answer = 0;
};
std::int32_t isWow64(Wow64Test& test, void* kernelModule, void* process) noexcept;

} // namespace toolbelt
