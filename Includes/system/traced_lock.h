// cTracedLock: a critical section that remembers who holds it, so that a dump of a process that hangs tells which
// operation is the cause. Every wrapper of a system library and every process-wide object has one.
#pragma once

#include <atomic>
#include <cstdint>
#include <source_location>

#include "crypto/base/export.h"

namespace toolbelt {

inline constexpr std::uint32_t LOCK_BUILDING = 0xC7DD;
inline constexpr std::uint32_t LOCK_READY = 0xC7AA;
inline constexpr std::uint32_t LOCK_NO_THREAD = 0xFFFFFFFF;

// The system's critical section record, field by field.
struct SectionRecord
{
    void* debugInfo;
    std::int32_t lockCount;
    std::int32_t recursionCount;
    void* owner;
    void* semaphore;
    std::uintptr_t spinCount;
};

// The fields are public to be read in a dump; only enter and leave write them. One thread may enter several times.
struct TB_API cTracedLock
{
    cTracedLock() noexcept;
    ~cTracedLock();
    cTracedLock(const cTracedLock&) = delete;
    cTracedLock& operator=(const cTracedLock&) = delete;

    // Waits a while for a record that another thread is still building, then takes the section whatever came of it.
    void enter(const wchar_t* operation, std::uint32_t line) noexcept;
    void leave() noexcept;

    SectionRecord section;
    std::atomic<std::uint32_t> readiness; // LOCK_BUILDING, then LOCK_READY
    std::atomic<std::uint8_t> closing;    // set: nobody waits for readiness any more
    std::int32_t depth;                   // entries of the holder that are open
    const wchar_t* holderOperation;       // "CDll::Load" for example, of the entry made last; null when free
    std::uint32_t holderLine;             // 0 when free
    std::uint32_t holderThread;           // the last thread that entered; LOCK_NO_THREAD before the first
    std::uint8_t enabled;                 // 1
};

// One entry, for the length of a scope. The operation is a literal: the lock keeps the pointer.
class TracedEntry
{
public:
    TracedEntry(cTracedLock& lock, const wchar_t* operation,
                const std::source_location& where = std::source_location::current()) noexcept
        : lock_(lock)
    {
        lock_.enter(operation, where.line());
    }
    ~TracedEntry() { lock_.leave(); }
    TracedEntry(const TracedEntry&) = delete;
    TracedEntry& operator=(const TracedEntry&) = delete;

private:
    cTracedLock& lock_;
};

// Lets other threads run: a zero-length sleep.
void yieldProcessor() noexcept;
// Puts another routine in the place of that sleep (null: the sleep again). For tests: not exported, not for two
// threads.
void setYield(void (*yield)() noexcept) noexcept;

} // namespace toolbelt
