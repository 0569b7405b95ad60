#include "cli/random.h"

#include <windows.h>

#include <wincrypt.h>

#include <cstring>

#include "cli/errors.h"

namespace toolbelt::cli {
namespace {

// Bound late: the first exists from Windows XP on, the others from Windows 95 OSR2 on.
template <typename Function>
Function find(HMODULE library, const char* name)
{
    const FARPROC found = GetProcAddress(library, name);
    Function function = nullptr;
    static_assert(sizeof function == sizeof found);
    std::memcpy(&function, &found, sizeof function);
    return function;
}

bool fromSystem(HMODULE library, BYTE* bytes, DWORD size)
{
    using Generate = BOOLEAN(WINAPI*)(PVOID, ULONG); // RtlGenRandom
    if (const auto generate = find<Generate>(library, "SystemFunction036")) return generate(bytes, size) != FALSE;

    using Acquire = BOOL(WINAPI*)(HCRYPTPROV*, LPCSTR, LPCSTR, DWORD, DWORD);
    using Random = BOOL(WINAPI*)(HCRYPTPROV, DWORD, BYTE*);
    using Release = BOOL(WINAPI*)(HCRYPTPROV, DWORD);
    const auto acquire = find<Acquire>(library, "CryptAcquireContextA");
    const auto random = find<Random>(library, "CryptGenRandom");
    const auto release = find<Release>(library, "CryptReleaseContext");
    HCRYPTPROV provider = 0;
    if (!acquire || !random || !release || !acquire(&provider, nullptr, nullptr, PROV_RSA_FULL, CRYPT_VERIFYCONTEXT))
        return false;
    const bool done = random(provider, size, bytes) != FALSE;
    release(provider, 0);
    return done;
}

} // namespace

Bytes systemRandom(std::size_t size)
{
    Bytes bytes(size);
    if (size == 0) return bytes;
    const HMODULE library = LoadLibraryW(L"advapi32.dll");
    const bool done = library && fromSystem(library, bytes.data(), static_cast<DWORD>(size));
    if (library) FreeLibrary(library);
    if (!done) throw Failure("random numbers", "the system has no generator", EXIT_SYSTEM);
    return bytes;
}

} // namespace toolbelt::cli
