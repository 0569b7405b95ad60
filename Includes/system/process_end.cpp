#include "Includes/system/process_end.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "Includes/system/dll.h"

namespace toolbelt {

bool processIsEnding() noexcept
{
    // Always loaded, so it need not be held. The export came after Windows 2000.
    const HMODULE loader = GetModuleHandleW(L"ntdll.dll");
    void* const address =
        loader ? reinterpret_cast<void*>(::GetProcAddress(loader, "RtlDllShutdownInProgress")) : nullptr;
    return address && asFunction<BOOLEAN(WINAPI*)()>(address)();
}

} // namespace toolbelt
