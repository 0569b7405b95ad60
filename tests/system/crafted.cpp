// A library in the place of a system's: it exports every name that is bound anywhere. What is called tells the test
// program, which also decides the answer (its function craftedCalled).
#include <cstdint>
#include <initializer_list>

#include "tests/system/crafted_events.h"

extern "C" {

__declspec(dllexport) void InitInstance(void* module)
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
    return static_cast<long>(tell("DllGetVersion", reinterpret_cast<void*>(record[0])));
}

__declspec(dllexport) void* __stdcall OpenSCManagerA(const char* machine, const char* database, std::uint32_t access)
{
    return reinterpret_cast<void*>(tell(machine || database ? "foreign manager" : "OpenSCManagerA", access));
}

__declspec(dllexport) int __stdcall CloseServiceHandle(void* handle)
{
    return tell("CloseServiceHandle", handle) != 0;
}

// The shell: an answer above 0 is success, and paths are "X:\" with the operation's name behind it.
static int givePath(wchar_t* path, const char* operation, std::intptr_t answer)
{
    const char* const prefix = "X:\\";
    for (const char* text : {prefix, operation})
        for (; *text; ++text) *path++ = static_cast<wchar_t>(*text);
    *path = 0;
    return static_cast<int>(answer);
}

__declspec(dllexport) int __stdcall SHGetSpecialFolderPathW(void*, wchar_t* path, int folder, int create)
{
    return givePath(path, "direct", tell("SHGetSpecialFolderPathW", folder + 1000 * create));
}

__declspec(dllexport) long __stdcall SHGetSpecialFolderLocation(void*, int folder, void** items)
{
    static char list;
    *items = &list;
    return tell("SHGetSpecialFolderLocation", folder) > 0 ? 0 : static_cast<long>(0x80004005);
}

__declspec(dllexport) int __stdcall SHGetPathFromIDListW(const void*, wchar_t* path)
{
    return givePath(path, "list", tell("SHGetPathFromIDListW"));
}

__declspec(dllexport) int __stdcall IsWow64Process(void*, int* answer)
{
    *answer = 1;
    return static_cast<int>(tell("IsWow64Process"));
}

struct Message
{
    std::uint32_t reserved;
    const char *subject, *text, *type, *received, *conversation;
    std::uint32_t flags;
    void* originator;
    std::uint32_t recipientCount;
    const struct
    {
        std::uint32_t reserved, recipientClass;
        const char *name, *address;
    } * recipients;
    std::uint32_t fileCount;
    const struct
    {
        std::uint32_t reserved, flags, position;
        const char* path;
    } * files;
};

__declspec(dllexport) std::uint32_t __stdcall MAPISendMail(std::uintptr_t session, std::uintptr_t window,
                                                           const Message* mail, std::uint32_t flags, std::uint32_t)
{
    tell(mail->recipients[0].address, mail->recipients[0].recipientClass + 10 * mail->recipientCount);
    tell(mail->subject, session);
    tell(mail->text, window);
    tell(mail->fileCount ? mail->files[0].path : "no file", mail->fileCount);
    return static_cast<std::uint32_t>(tell("MAPISendMail", flags));
}
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
