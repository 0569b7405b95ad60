#include "Includes/system/wow64.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "Includes/system/dll.h"

namespace toolbelt {
namespace {

Wow64Test processWide;

} // namespace

std::int32_t isWow64(Wow64Test& test, void* kernelModule, void* process) noexcept
{
    if (!kernelModule) return 0;
    if (!test.lookedUp) {
        test.function = reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(kernelModule), "IsWow64Process"));
        test.lookedUp = true;
    }
    void* const function = test.function;
    if (!function) {
        test.answer = 0;
        return 1;
    }
    BOOL answer = test.answer;
    const BOOL result = asFunction<BOOL(WINAPI*)(HANDLE, BOOL*)>(function)(process, &answer);
    test.answer = answer;
    return result;
}

std::int32_t IsWow64(void* kernelModule, void* process) noexcept
{
    return isWow64(processWide, kernelModule, process);
}

std::int32_t wow64Answer() noexcept
{
    return processWide.answer;
}

} // namespace toolbelt
