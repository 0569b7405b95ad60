// Threads and locks for the work that runs on several processors: kernel services on Windows, POSIX threads elsewhere.
#pragma once

#include <cstdint>

namespace toolbelt::threads {

// Processors of the machine, at least 1.
std::uint32_t processorCount() noexcept;

// Runs work(argument) on up to count new threads and waits for all of them, without a time limit. Returns how many
// could be started; 0 means that no work was done. Each has a stack of a megabyte and a generator of its own
// (runtimeRand) that starts from seed 1.
std::uint32_t runAndWait(std::uint32_t count, void (*work)(void* argument), void* argument) noexcept;

// Puts the calling thread into background mode: the system lets all other work go first. Nothing happens on systems
// that do not know it.
void enterBackgroundMode() noexcept;

// A lock between threads, not recursive. Test it before use: a system without memory may not provide one.
class Lock
{
public:
    Lock() noexcept;
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    explicit operator bool() const noexcept { return valid_; }
    void enter() noexcept;
    void leave() noexcept;

private:
    alignas(8) unsigned char system_[40]; // the system's own record, whose header is kept out of here
    bool valid_;
};

// Holds a lock for a scope.
class LockScope
{
public:
    explicit LockScope(Lock& lock) noexcept : lock_(lock) { lock_.enter(); }
    ~LockScope() { lock_.leave(); }
    LockScope(const LockScope&) = delete;
    LockScope& operator=(const LockScope&) = delete;

private:
    Lock& lock_;
};

} // namespace toolbelt::threads
