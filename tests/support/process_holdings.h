// What this process holds, counted from outside the library: handles and threads by the system's own lists, blocks by
// walking the process's heap. For Windows; link ntdll and psapi.
#pragma once

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>
#include <winternl.h>

#include <vector>

namespace toolbelt::test {

struct Holdings
{
    int handles = 0, threads = 0, blocks = 0;
    SIZE_T bytes = 0; // of committed memory
};

inline int openHandles()
{
    int count = 0;
    std::vector<ULONG> list(1 << 18); // count, then entries of 16 bytes that begin with the process
    ULONG size = 0;
    NtQuerySystemInformation(static_cast<SYSTEM_INFORMATION_CLASS>(16), list.data(),
                             static_cast<ULONG>(list.size() * sizeof(ULONG)), &size);
    for (ULONG i = 0; i < list[0] && i * 4 + 4 < list.size(); ++i) count += list[1 + i * 4] == GetCurrentProcessId();
    return count;
}

inline Holdings holdings()
{
    Holdings found;
    found.handles = openHandles();
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 thread = {};
    thread.dwSize = sizeof thread;
    for (BOOL more = Thread32First(snapshot, &thread); more; more = Thread32Next(snapshot, &thread))
        found.threads += thread.th32OwnerProcessID == GetCurrentProcessId();
    CloseHandle(snapshot);
    PROCESS_HEAP_ENTRY entry = {};
    while (HeapWalk(GetProcessHeap(), &entry)) found.blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    found.bytes = counters.PagefileUsage;
    return found;
}

} // namespace toolbelt::test
