// What this process holds, counted from outside the library: handles by the system's own list, blocks by
// walking the process's heap. For Windows; link ntdll and psapi.
#pragma once

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <psapi.h>
#include <winternl.h>

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/drawing_objects.h"

namespace toolbelt::test {

struct Holdings
{
    int handles = 0, blocks = 0, drawing = 0; // drawing: fonts, brushes, devices
    SIZE_T bytes = 0;                         // of committed memory
};

inline int openHandles()
{
    constexpr auto ALL_HANDLES = static_cast<SYSTEM_INFORMATION_CLASS>(16);
    std::vector<ULONG> list(1 << 16); // count, then entries of 16 bytes that begin with the process
    const auto query = [&] {
        const auto size = static_cast<ULONG>(list.size() * sizeof(ULONG));
        return static_cast<ULONG>(NtQuerySystemInformation(ALL_HANDLES, list.data(), size, nullptr));
    };
    constexpr ULONG LENGTH_MISMATCH = 0xC0000004;
    ULONG status;
    while ((status = query()) == LENGTH_MISMATCH) list.resize(2 * list.size());
    int count = 0;
    for (ULONG i = 0; status == 0 && i < list[0]; ++i) count += list[1 + i * 4] == GetCurrentProcessId();
    EXPECT_GT(count, 0) << "the system does not tell its handles: status " << status;
    return count;
}

inline Holdings holdings()
{
    Holdings found;
    found.handles = openHandles();
    PROCESS_HEAP_ENTRY entry = {};
    while (HeapWalk(GetProcessHeap(), &entry)) found.blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
    found.drawing = drawingObjects();
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    found.bytes = counters.PagefileUsage;
    return found;
}

} // namespace toolbelt::test
