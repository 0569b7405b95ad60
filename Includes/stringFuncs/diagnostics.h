// What the support layers say when something is wrong: the debug channel (memory exhaustion, traces) and the assertion
// report (programming errors). Each is one replaceable function; neither ever stops the program or shows a window.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "crypto/base/export.h"
#include "crypto/base/heap.h"

namespace toolbelt {

// DebugChannel takes one zero-terminated message. It may be called from any thread, and when memory has run out.
using DebugChannel = void (*)(const wchar_t* message);
// Puts another channel in place and returns the one before; null stands for the default, which is the debugger's output
// on Windows and the standard error stream elsewhere.
TB_API DebugChannel setDebugChannel(DebugChannel channel) noexcept;
void debugMessage(const wchar_t* message) noexcept;
// "Assertion! Error in memory allocation!" to the debug channel.
void reportOutOfMemory() noexcept;

// AssertionReport takes the expression that did not hold, the source file and the line.
using AssertionReport = void (*)(const wchar_t* expression, const wchar_t* file, std::int32_t line);
// Puts another report in place and returns the one before; null stands for the default, which writes one line to the
// debug channel. Who reports goes on: the operation is skipped.
TB_API AssertionReport setAssertionReport(AssertionReport report) noexcept;
void reportAssertion(const wchar_t* expression, const wchar_t* file, std::int32_t line) noexcept;

// SafeFree: frees what the variable points to (memory from heap::allocate, released as it is: secrets are wiped by
// their owner first) and sets it to null. Without a variable it reports the assertion "false" and does nothing else.
TB_API void SafeFree(std::nullptr_t) noexcept;
template <typename T>
void SafeFree(T** variable) noexcept
{
    static_assert(std::is_void_v<T> || std::is_trivially_destructible_v<T>, "frees memory, ends no object's life");
    if (variable == nullptr) return SafeFree(nullptr);
    heap::release(*variable);
    *variable = nullptr;
}

} // namespace toolbelt
