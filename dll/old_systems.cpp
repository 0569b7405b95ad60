// The C++ runtime's threads take GetTickCount64 from the kernel library, which Windows XP does not have: a DLL that
// imports it is not loaded there. So the import's slot is here, and the function is looked up when it is called. A
// clock of 32 bits serves where there is none: it is asked for time limits alone, and starts anew every 49 days.
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace {

unsigned long long __stdcall tickCount() noexcept
{
    using Function = unsigned long long(__stdcall*)();
    void* const found = reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "GetTickCount64"));
    return found ? reinterpret_cast<Function>(found)() : GetTickCount();
}

} // namespace

extern "C" {
// The slot's name as the linker knows it; calls go through it.
extern unsigned long long(__stdcall* const tickCountSlot)() __asm__("__imp__GetTickCount64@0");
unsigned long long(__stdcall* const tickCountSlot)() = tickCount;
}
