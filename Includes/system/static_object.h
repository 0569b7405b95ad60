// cStaticObjectCS<T>: the one process-wide T, built on first use and destroyed when the process ends, such objects in
// the reverse order of their building. Threads that come first at the same time get one object, complete. The object is
// one of the module that the code is built into: a program that instantiates the template has its own beside the DLL's.
#pragma once

#include "Includes/stringFuncs/mbstr.h"
#include "Includes/system/traced_lock.h"

namespace toolbelt {

template <typename T>
class cStaticObjectCS
{
public:
    // The object. The operation and the place of the call are what its lock tells about the holder; the lock is held
    // only until the object is there.
    static T& getStatic(const wchar_t* operation = L"cStaticObjectCS::getStatic",
                        const std::source_location& where = std::source_location::current()) noexcept
    {
        const TracedEntry entry(lock(), operation, where);
        static T object;
        return object;
    }
    // The lock; it outlives the object.
    static cTracedLock& lock() noexcept
    {
        static cTracedLock lock;
        return lock;
    }
};

// The shared 8-bit text. One of the library's own: a program that uses the DLL gets the same object.
template <>
TB_API cMBStr& cStaticObjectCS<cMBStr>::getStatic(const wchar_t* operation, const std::source_location& where) noexcept;
template <>
TB_API cTracedLock& cStaticObjectCS<cMBStr>::lock() noexcept;

} // namespace toolbelt
