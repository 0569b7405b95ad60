#include "Includes/system/traced_lock.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstddef>

namespace toolbelt {
namespace {

constexpr int FURTHER_YIELDS = 101;

static_assert(sizeof(SectionRecord) == sizeof(CRITICAL_SECTION));
static_assert(alignof(SectionRecord) == alignof(CRITICAL_SECTION));
static_assert(offsetof(cTracedLock, section) == 0 && offsetof(cTracedLock, readiness) == sizeof(CRITICAL_SECTION));
static_assert(offsetof(cTracedLock, closing) == 28 && offsetof(cTracedLock, depth) == 32);
static_assert(offsetof(cTracedLock, holderOperation) == 36 && offsetof(cTracedLock, holderLine) == 40);
static_assert(offsetof(cTracedLock, holderThread) == 44 && offsetof(cTracedLock, enabled) == 48);

void (*yieldInstead)() noexcept = nullptr;

CRITICAL_SECTION* sectionOf(cTracedLock& lock)
{
    return reinterpret_cast<CRITICAL_SECTION*>(&lock.section);
}

void waitUntilReady(const cTracedLock& lock)
{
    if (lock.readiness == LOCK_READY) return;
    yieldProcessor();
    for (int made = 0; lock.readiness != LOCK_READY && !lock.closing && made < FURTHER_YIELDS; ++made) yieldProcessor();
}

} // namespace

cTracedLock::cTracedLock() noexcept
    : section{}, readiness(LOCK_BUILDING), closing(0), depth(0), holderOperation(nullptr), holderLine(0),
      holderThread(LOCK_NO_THREAD), enabled(1)
{
    InitializeCriticalSection(sectionOf(*this));
    depth = 0;
    readiness = LOCK_READY;
}

cTracedLock::~cTracedLock()
{
    closing = 1;
    DeleteCriticalSection(sectionOf(*this));
}

void cTracedLock::enter(const wchar_t* operation, std::uint32_t line) noexcept
{
    waitUntilReady(*this);
    EnterCriticalSection(sectionOf(*this));
    ++depth;
    holderOperation = operation;
    holderLine = line;
    holderThread = GetCurrentThreadId();
}

void cTracedLock::leave() noexcept
{
    if (--depth < 1) {
        holderOperation = nullptr;
        holderLine = 0;
    }
    LeaveCriticalSection(sectionOf(*this));
}

void yieldProcessor() noexcept
{
    if (yieldInstead)
        yieldInstead();
    else
        Sleep(0);
}

void setYield(void (*yield)() noexcept) noexcept
{
    yieldInstead = yield;
}

} // namespace toolbelt
