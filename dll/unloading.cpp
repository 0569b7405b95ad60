// What the C++ runtime takes when the DLL is loaded, and would keep when a program releases it (FreeLibrary): the place
// of its threads in the thread-local storage, of which a process has some thousand in all, its record of the thread,
// with two handles, and its reserve for exceptions. Given back here, after everything else of the DLL has ended.
//
// Other threads that have been inside the DLL and outlive it leave two handles and some hundred bytes each for good.
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <atomic>

#include "Includes/system/process_end.h"

namespace {

constexpr unsigned PLACES = 8; // one is taken
DWORD places[PLACES];
std::atomic<unsigned> placeCount = 0;

DWORD __stdcall takePlace() noexcept
{
    using Function = DWORD(__stdcall*)();
    void* const found = reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "TlsAlloc"));
    const DWORD place = found ? reinterpret_cast<Function>(found)() : TLS_OUT_OF_INDEXES;
    if (place == TLS_OUT_OF_INDEXES) return place;
    if (const unsigned at = placeCount++; at < PLACES) places[at] = place;
    return place;
}

} // namespace

extern "C" {
// The slot of the import, as the linker knows it; the runtime's calls go through it.
extern DWORD(__stdcall* const takePlaceSlot)() __asm__("__imp__TlsAlloc@0");
DWORD(__stdcall* const takePlaceSlot)() = takePlace;
// What the runtime's threads do when a thread ends.
extern PIMAGE_TLS_CALLBACK __xl_f;
}

namespace __gnu_cxx {
void __freeres(); // the runtime's own, for programs that count memory
}

namespace {

struct GiveBack
{
    ~GiveBack()
    {
        if (toolbelt::processIsEnding()) return;
        __xl_f(nullptr, DLL_THREAD_DETACH, nullptr);
        for (unsigned i = 0; i < placeCount && i < PLACES; ++i) TlsFree(places[i]);
        __gnu_cxx::__freeres();
    }
};
// Built before anything else, and so destroyed behind it: but for the standard streams, whose priority is lower. The DLL
// does not use them.
[[gnu::init_priority(101), maybe_unused]] GiveBack giveBack;

} // namespace
