#include "Includes/system/sys_dll.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "Includes/system/process_end.h"

namespace toolbelt {
namespace {

static_assert(sizeof(DllVersionRecord) == 20);

std::atomic<bool> mayRelease = false;

} // namespace

CSysDll::~CSysDll()
{
    if (!processIsEnding()) CSysDll::Unload();
    record_.module = nullptr; // kept on purpose: the base must not release it
}

void CSysDll::Unload() noexcept
{
    if (mayRelease) CDll::Unload();
}

bool CSysDll::Load(const wchar_t* path, const char* function, std::int32_t report,
                   std::int32_t alteredSearchPath) noexcept
{
    LoadResult result;
    bool told = false;
    {
        const TracedEntry entry(record_.lock, L"CDll::Load");
        if (record_.module) return true;
        result = load(path, function, report, alteredSearchPath);
        version_ = {}; // an earlier library's
        if (result.done)
            if (void* const getVersion = lookUp("DllGetVersion")) {
                version_.size = sizeof(version_);
                asFunction<HRESULT(WINAPI*)(DllVersionRecord*)>(getVersion)(&version_);
                told = true;
            }
    }
    if (!result.done && report != 0) showFailure(result, path, function);
    return told;
}

bool setReleaseSystemLibraries(bool release) noexcept
{
    return mayRelease.exchange(release);
}

} // namespace toolbelt
