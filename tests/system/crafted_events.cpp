#include "tests/system/crafted_events.h"

#include <windows.h>

std::intptr_t tell(const char* what, std::uintptr_t argument)
{
    using Called = std::intptr_t(__cdecl*)(const char*, std::uintptr_t);
    void* const called = reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(nullptr), "craftedCalled"));
    return called ? reinterpret_cast<Called>(called)(what, argument) : 0;
}
