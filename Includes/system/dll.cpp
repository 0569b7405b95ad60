#include "Includes/system/dll.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstddef>

#include "Includes/stringFuncs/wcs.h"
#include "Includes/system/message_box.h"
#include "Includes/system/process_end.h"

namespace toolbelt {
namespace {

static_assert(offsetof(DllRecord, lock) == 0 && offsetof(DllRecord, inFlight) == sizeof(cTracedLock));
static_assert(offsetof(DllRecord, callEnvironment) == 56 && offsetof(DllRecord, status) == 60);
static_assert(offsetof(DllRecord, lastFunction) == 64 && offsetof(DllRecord, module) == 68);
static_assert(offsetof(DllRecord, report) == 72 && offsetof(DllRecord, path) == 74);
static_assert(sizeof(CDll) == sizeof(void*) + sizeof(DllRecord));

constexpr wchar_t ERROR_TITLE[] = L"Error";

void* addressIn(void* module, const char* name)
{
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(module), name));
}

void copyPath(wchar_t (&target)[DLL_PATH_UNITS], const wchar_t* path)
{
    std::int32_t length = 0;
    for (; path[length] && length < DLL_PATH_UNITS - 1; ++length) target[length] = path[length];
    for (; length < DLL_PATH_UNITS; ++length) target[length] = 0;
}

} // namespace

CDll::CDll() noexcept
{
    const TracedEntry entry(record_.lock, L"CDll::CDll");
    record_.status = DLL_NOT_LOADED;
}

CDll::CDll(const wchar_t* path, const char* function, std::int32_t report, std::int32_t alteredSearchPath) noexcept
{
    {
        const TracedEntry entry(record_.lock, L"CDll::CDll");
        record_.status = DLL_LOADING;
    }
    Load(path, function, report, alteredSearchPath);
}

CDll::~CDll()
{
    if (!processIsEnding()) CDll::Unload();
}

bool CDll::Load(const wchar_t* path, const char* function, std::int32_t report, std::int32_t alteredSearchPath) noexcept
{
    LoadResult result;
    {
        const TracedEntry entry(record_.lock, L"CDll::Load");
        result = load(path, function, report, alteredSearchPath);
    }
    if (!result.done && report != 0) showFailure(result, path, function);
    return result.done;
}

CDll::LoadResult CDll::load(const wchar_t* path, const char* function, std::int32_t report,
                            std::int32_t alteredSearchPath) noexcept
{
    LoadResult result;
    Unload();
    const TracedEntry entry(record_.lock, L"CDll::Load"); // Unload has left its own name there
    record_.status = DLL_LOADING;
    record_.inFlight = 0;
    record_.report = report == 1;
    record_.module = LoadLibraryExW(path, nullptr, alteredSearchPath > 0 ? LOAD_WITH_ALTERED_SEARCH_PATH : 0);
    result.error = GetLastError();
    if (!record_.module) {
        record_.status = DLL_NOT_LOADED;
        return result;
    }
    result.loaded = true;
    if (record_.callEnvironment)
        if (void* const start = addressIn(record_.module, "InitInstance"))
            asFunction<void(__cdecl*)(void*)>(start)(record_.module);
    copyPath(record_.path, path);
    if (function) {
        result.done = lookUp(function) != nullptr;
    } else {
        record_.status = DLL_DONE;
        result.done = true;
    }
    return result;
}

void CDll::showFailure(const LoadResult& result, const wchar_t* path, const char* function) noexcept
{
    if (result.loaded) {
        showMissing(function);
        return;
    }
    cWCS text;
    showMessage(nullptr, text.Format(L"Can not load module %s\nerr - %d", path, result.error), ERROR_TITLE,
                MESSAGE_ICON_STOP);
}

void* CDll::getProc() noexcept
{
    const TracedEntry entry(record_.lock, L"CDll::getProc");
    return record_.lastFunction;
}

std::uint32_t CDll::getLastError() noexcept
{
    const TracedEntry entry(record_.lock, L"CDll::getLastError");
    return record_.status;
}

void CDll::copyFullPath(wchar_t (&path)[DLL_PATH_UNITS]) const noexcept
{
    const TracedEntry entry(record_.lock, L"CDll::copyFullPath");
    if (!record_.module || !GetModuleFileNameW(static_cast<HMODULE>(record_.module), path, DLL_PATH_UNITS))
        copyPath(path, record_.path);
    path[DLL_PATH_UNITS - 1] = 0; // old systems cut without a terminator
}

bool CDll::GetProcAddress(const char* name, std::int32_t report, void** out) noexcept
{
    *out = nullptr;
    {
        const TracedEntry entry(record_.lock, L"CDll::GetProcAddress");
        if (!record_.module) return false;
        *out = lookUp(name);
    }
    if (!*out && report != 0) showMissing(name);
    return *out != nullptr;
}

void* CDll::lookUp(const char* name) noexcept
{
    if (!record_.module) return nullptr;
    record_.lastFunction = addressIn(record_.module, name);
    record_.status = record_.lastFunction ? DLL_DONE : DLL_NO_FUNCTION;
    return record_.lastFunction;
}

void CDll::showMissing(const char* name) noexcept
{
    cWCS text;
    showMessage(nullptr, text.Format(L"Can not get procedure address - '%S'", name), ERROR_TITLE, MESSAGE_ICON_STOP);
}

void CDll::Unload() noexcept
{
    const TracedEntry entry(record_.lock, L"CDll::Unload");
    if (!record_.module) return;
    if (record_.inFlight > 0) yieldProcessor();
    if (record_.callEnvironment)
        if (void* const finish = lookUp("UnloadEnvironment")) asFunction<void(__cdecl*)()>(finish)();
    record_.status = DLL_UNLOADED;
    FreeLibrary(static_cast<HMODULE>(record_.module));
    record_.module = nullptr;
}

} // namespace toolbelt
