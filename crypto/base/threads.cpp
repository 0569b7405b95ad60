#include "crypto/base/threads.h"

#include "crypto/base/heap.h"

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <pthread.h>
#include <unistd.h>
#endif

namespace toolbelt::threads {
namespace {

constexpr std::size_t STACK_BYTES = 1 << 20;

struct Task
{
    void (*work)(void*);
    void* argument;
};

#if defined(_WIN32)

using Handle = HANDLE;
using SystemLock = CRITICAL_SECTION;

DWORD WINAPI entry(void* task)
{
    static_cast<const Task*>(task)->work(static_cast<const Task*>(task)->argument);
    return 0;
}

bool start(Handle& thread, Task& task) noexcept
{
    thread = CreateThread(nullptr, STACK_BYTES, entry, &task, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    return thread != nullptr;
}

void waitAndClose(Handle thread) noexcept
{
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
}

#else

using Handle = pthread_t;
using SystemLock = pthread_mutex_t;

void* entry(void* task)
{
    static_cast<const Task*>(task)->work(static_cast<const Task*>(task)->argument);
    return nullptr;
}

bool start(Handle& thread, Task& task) noexcept
{
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) return false;
    const bool started = pthread_attr_setstacksize(&attributes, STACK_BYTES) == 0 &&
                         pthread_create(&thread, &attributes, entry, &task) == 0;
    pthread_attr_destroy(&attributes);
    return started;
}

void waitAndClose(Handle thread) noexcept
{
    pthread_join(thread, nullptr);
}

#endif

SystemLock* systemLock(unsigned char* bytes) noexcept
{
    return reinterpret_cast<SystemLock*>(bytes);
}

} // namespace

std::uint32_t runAndWait(std::uint32_t count, void (*work)(void*), void* argument) noexcept
{
    SecretArray<Handle> threads(count);
    if (!threads) return 0;
    Task task = {work, argument};
    std::uint32_t started = 0;
    while (started < count && start(threads[started], task)) ++started;
    for (std::uint32_t i = 0; i < started; ++i) waitAndClose(threads[i]);
    return started;
}

#if defined(_WIN32)

std::uint32_t processorCount() noexcept
{
    SYSTEM_INFO information;
    GetSystemInfo(&information);
    return information.dwNumberOfProcessors > 0 ? information.dwNumberOfProcessors : 1;
}

void enterBackgroundMode() noexcept
{
    constexpr int BACKGROUND_BEGIN = 0x10000; // refused by systems older than the mode, and then of no effect
    SetThreadPriority(GetCurrentThread(), BACKGROUND_BEGIN);
}

Lock::Lock() noexcept
{
    static_assert(sizeof(SystemLock) <= sizeof system_ && alignof(SystemLock) <= 8);
    // The top bit has old systems allocate all that the lock will need now, so that entering it cannot fail later.
    valid_ = InitializeCriticalSectionAndSpinCount(systemLock(system_), 0x80000000) != 0;
}
Lock::~Lock()
{
    if (valid_) DeleteCriticalSection(systemLock(system_));
}
void Lock::enter() noexcept
{
    EnterCriticalSection(systemLock(system_));
}
void Lock::leave() noexcept
{
    LeaveCriticalSection(systemLock(system_));
}

#else

std::uint32_t processorCount() noexcept
{
    const long count = sysconf(_SC_NPROCESSORS_ONLN);
    return count > 0 ? static_cast<std::uint32_t>(count) : 1;
}

void enterBackgroundMode() noexcept {}

Lock::Lock() noexcept
{
    static_assert(sizeof(SystemLock) <= sizeof system_ && alignof(SystemLock) <= 8);
    valid_ = pthread_mutex_init(systemLock(system_), nullptr) == 0;
}
Lock::~Lock()
{
    if (valid_) pthread_mutex_destroy(systemLock(system_));
}
void Lock::enter() noexcept
{
    pthread_mutex_lock(systemLock(system_));
}
void Lock::leave() noexcept
{
    pthread_mutex_unlock(systemLock(system_));
}

#endif

} // namespace toolbelt::threads
