// A library in the place of a system's: it exports every name that is bound anywhere. What is called tells the test
// program, which also decides the answer (its function craftedCalled). The system's headers are left out: they declare
// the same names.
#include <cstdint>

extern "C" {

__declspec(dllimport) void* __stdcall GetModuleHandleW(const wchar_t*);
__declspec(dllimport) void* __stdcall GetProcAddress(void*, const char*);

static std::intptr_t tell(const char* what, std::uintptr_t argument = 0)
{
    using Called = std::intptr_t(__cdecl*)(const char*, std::uintptr_t);
    void* const called = GetProcAddress(GetModuleHandleW(nullptr), "craftedCalled");
    return called ? reinterpret_cast<Called>(called)(what, argument) : 0;
}

__declspec(dllexport) void InitInstance(std::uintptr_t module)
{
    tell("InitInstance", module);
}

__declspec(dllexport) void UnloadEnvironment()
{
    tell("UnloadEnvironment");
}

__declspec(dllexport) long __stdcall DllGetVersion(std::uint32_t* record)
{
    for (std::uint32_t i = 1; i < 5; ++i) record[i] = record[i] == 0 ? 10 * i : 0; // a cleared record is expected
    return tell("DllGetVersion", record[0]);
}

__declspec(dllexport) std::intptr_t
    __stdcall OpenSCManagerA(const char* machine, const char* database, std::uint32_t access)
{
    return tell(machine || database ? "foreign manager" : "OpenSCManagerA", access);
}

__declspec(dllexport) int __stdcall CloseServiceHandle(std::uintptr_t handle)
{
    return tell("CloseServiceHandle", handle) != 0;
}

// The shell: an answer above 0 is success, and paths are "X:\" with the operation's name behind it.
static int givePath(wchar_t* path, const wchar_t* text, std::intptr_t answer)
{
    while ((*path++ = *text++)) {
    }
    return static_cast<int>(answer);
}

__declspec(dllexport) int __stdcall SHGetSpecialFolderPathW(void*, wchar_t* path, int folder, int create)
{
    return givePath(path, L"X:\\direct",
                    tell("SHGetSpecialFolderPathW", static_cast<std::uintptr_t>(folder + 1000 * create)));
}

__declspec(dllexport) long __stdcall SHGetSpecialFolderLocation(void*, std::uintptr_t folder, void** items)
{
    static char list;
    *items = &list;
    return tell("SHGetSpecialFolderLocation", folder) > 0 ? 0 : -1;
}

__declspec(dllexport) int __stdcall SHGetPathFromIDListW(const void*, wchar_t* path)
{
    return givePath(path, L"X:\\list", tell("SHGetPathFromIDListW"));
}

__declspec(dllexport) int __stdcall IsWow64Process(void*, int* answer)
{
    *answer = 1;
    return static_cast<int>(tell("IsWow64Process"));
}

// The mail's record, and those that it points to, as 32-bit words.
__declspec(dllexport) std::uint32_t
    __stdcall MAPISendMail(std::uintptr_t session, std::uintptr_t window, const std::uintptr_t* mail,
                           std::uint32_t flags, std::uint32_t)
{
    const auto text = [](std::uintptr_t word) { return reinterpret_cast<const char*>(word); };
    const auto* const recipient = reinterpret_cast<const std::uintptr_t*>(mail[9]);
    tell(text(recipient[3]), recipient[1] + 10 * mail[8]);
    tell(text(mail[1]), session);
    tell(text(mail[2]), window);
    tell(mail[10] ? text(reinterpret_cast<const std::uintptr_t*>(mail[11])[3]) : "no file", mail[10]);
    return static_cast<std::uint32_t>(tell("MAPISendMail", flags));
}

// Those that the tests bind but never call: a name and an address of its own is all that binding can tell.
__declspec(dllexport) char CreateServiceA, StartServiceA, OpenServiceA, SetEntriesInAclA, AllocateAndInitializeSid,
    InitializeSecurityDescriptor, SetSecurityDescriptorDacl, DeleteServiceA, DeleteService, ControlServiceA,
    ControlService, QueryServiceStatus, OpenSCManagerW, CreateServiceW, StartServiceW, OpenServiceW, SetEntriesInAclW,
    RegDeleteKeyExA, RegDeleteKeyExW, RevertToSelf, LookupPrivilegeValueA, LookupPrivilegeValue, LookupPrivilegeValueW,
    LogonUserW, LogonUserA, ImpersonateNamedPipeClient, ImpersonateLoggedOnUser, CreateProcessWithLogonW,
    QueryServiceConfigW, ChangeServiceConfigW, OpenProcessToken, GetTokenInformation, LogonUserExW;
__declspec(dllexport) char SHGetSpecialFolderPathA, SHBrowseForFolder, SHGetPathFromIDList, FindExecutableA,
    ExtractIconW, ExtractIconA, ExtractIconExW, ExtractIconExA, SHGetFileInfoA, SHGetFileInfo;
}

// The shell's allocator, of which Free and Release are used.
struct Allocator
{
    virtual long __stdcall QueryInterface(const void*, void**) { return 0; }
    virtual unsigned long __stdcall AddRef() { return 1; }
    virtual unsigned long __stdcall Release() { return static_cast<unsigned long>(tell("Release")); }
    virtual void* __stdcall Alloc(unsigned long) { return nullptr; }
    virtual void* __stdcall Realloc(void*, unsigned long) { return nullptr; }
    virtual void __stdcall Free(void*) { tell("Free"); }
};

extern "C" __declspec(dllexport) long __stdcall SHGetMalloc(Allocator** allocator)
{
    static Allocator only;
    *allocator = &only;
    return tell("SHGetMalloc") > 0 ? 0 : -1;
}
