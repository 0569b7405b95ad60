// CDll: a system library that is loaded and bound while the program runs, so that one build serves old and new systems
// and a missing function costs one feature.
//
// Every operation is one entry of the object's lock, so threads may share an object. Error boxes are shown after the
// lock is free again: a user who leaves a box open holds up nobody else.
#pragma once

#include <cstdint>

#include "Includes/system/traced_lock.h"
#include "crypto/base/export.h"

namespace toolbelt {

enum DllStatus : std::uint32_t
{
    DLL_DONE = 0,        // the last load or lookup succeeded
    DLL_NOT_LOADED = 1,  // nothing was loaded yet, or the last load failed
    DLL_NO_FUNCTION = 2, // the last lookup found nothing
    DLL_UNLOADED = 3,
    DLL_LOADING = 4,
};

inline constexpr std::int32_t DLL_PATH_UNITS = 260;

struct DllRecord
{
    mutable cTracedLock lock;
    std::int32_t inFlight = 0;        // calls under way; Unload yields once for them
    std::uint8_t callEnvironment = 1; // call the library's InitInstance and UnloadEnvironment
    std::uint32_t status = DLL_NOT_LOADED;
    void* lastFunction = nullptr; // found by the last lookup
    void* module = nullptr;
    std::uint8_t report = 0;           // failed lookups are shown in a box
    wchar_t path[DLL_PATH_UNITS] = {}; // as given to Load, cut to 259 units
};

// The address as the function that it is: asFunction<decltype(&::SendMessageW)>(address)
template <typename Function>
Function asFunction(void* address) noexcept
{
    return reinterpret_cast<Function>(address);
}

class TB_API CDll
{
public:
    CDll() noexcept;
    explicit CDll(const wchar_t* path, const char* function = nullptr, std::int32_t report = 0,
                  std::int32_t alteredSearchPath = 0) noexcept;
    // Unloads, unless the process is ending. Not virtual: do not delete through a base.
    ~CDll();
    CDll(const CDll&) = delete;
    CDll& operator=(const CDll&) = delete;

    // The only virtual operation. A library that exports "UnloadEnvironment" (cdecl, no arguments) has it called first.
    virtual void Unload() noexcept;

    // Unloads what is loaded, loads the library and, given a name, looks the function up. A library that exports
    // "InitInstance" (cdecl, taking the module handle) has it called. A report other than 0 shows failures in a box.
    bool Load(const wchar_t* path, const char* function = nullptr, std::int32_t report = 0,
              std::int32_t alteredSearchPath = 0) noexcept;
    // The address found by the last lookup, or null. It is kept as it was when a load fails, and unloading leaves it
    // pointing into the library that is gone: ask only after a load or lookup that succeeded.
    void* getProc() noexcept;
    std::uint32_t getLastError() noexcept; // a DllStatus
    // The name is a text, not an ordinal; out must not be null, and *out is null when nothing is found.
    bool GetProcAddress(const char* name, std::int32_t report, void** out) noexcept;

    // The loaded library's full path, cut to 259 units; without one, the path that was loaded last, as it was given.
    void copyFullPath(wchar_t (&path)[DLL_PATH_UNITS]) const noexcept;

    const DllRecord& record() const noexcept { return record_; }

protected:
    struct LoadResult
    {
        bool loaded = false;
        bool done = false;       // loaded, and the function, if any, found
        std::uint32_t error = 0; // the system's, when not loaded
    };
    // The work of Load, and its boxes; the caller holds the lock for the first and not for the second.
    LoadResult load(const wchar_t* path, const char* function, std::int32_t report,
                    std::int32_t alteredSearchPath) noexcept;
    static void showFailure(const LoadResult& result, const wchar_t* path, const char* function) noexcept;
    // The work of GetProcAddress: sets the last function and the status. Null also without a module.
    void* lookUp(const char* name) noexcept;
    static void showMissing(const char* name) noexcept;

    DllRecord record_;
};

} // namespace toolbelt
