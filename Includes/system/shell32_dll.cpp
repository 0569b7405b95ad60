#include "Includes/system/shell32_dll.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <shlobj.h>

#include "Includes/system/missing_function.h"
#include "Includes/system/static_object.h"

namespace toolbelt {
namespace {

struct Binding
{
    void* ShellFunctions::*slot;
    const char* name;
};

using Functions = ShellFunctions;

constexpr Binding bindings[] = {
    {&Functions::getSpecialFolderPathA, "SHGetSpecialFolderPathA"},
    {&Functions::getSpecialFolderPathW, "SHGetSpecialFolderPathW"},
    {&Functions::getPathFromIdListW, "SHGetPathFromIDListW"},
    {&Functions::getSpecialFolderLocation, "SHGetSpecialFolderLocation"},
    {&Functions::browseForFolder, "SHBrowseForFolder"},
    {&Functions::getPathFromIdList, "SHGetPathFromIDList"},
    {&Functions::getMalloc, "SHGetMalloc"},
    {&Functions::findExecutableA, "FindExecutableA"},
    {&Functions::extractIconW, "ExtractIconW"},
    {&Functions::extractIconA, "ExtractIconA"},
    {&Functions::extractIconExW, "ExtractIconExW"},
    {&Functions::extractIconExA, "ExtractIconExA"},
    {&Functions::getFileInfoA, "SHGetFileInfoA"},
    {&Functions::getFileInfo, "SHGetFileInfo"},
};
static_assert(sizeof(bindings) / sizeof(Binding) == sizeof(Functions) / sizeof(void*));

constexpr int DOCUMENTS = 5;
static_assert(DOCUMENTS == CSIDL_PERSONAL && DLL_PATH_UNITS == MAX_PATH);
constexpr DWORD NAME_UNITS = 100;

// What a system does without a documents folder: the user's folder among the profiles.
bool buildProfilePath(wchar_t (&path)[DLL_PATH_UNITS])
{
    wchar_t name[NAME_UNITS];
    DWORD units = NAME_UNITS;
    CDll security(L"advapi32.dll", "GetUserNameW");
    const auto getUserName = asFunction<decltype(&::GetUserNameW)>(security.getProc());
    if (!getUserName || !getUserName(name, &units)) return false;
    UINT length = GetWindowsDirectoryW(path, DLL_PATH_UNITS);
    if (length == 0 || length >= DLL_PATH_UNITS) return false;
    for (const wchar_t* part : {L"\\Profiles\\", static_cast<const wchar_t*>(name)})
        for (; *part; ++part) {
            if (length + 1 >= DLL_PATH_UNITS) return false;
            path[length++] = *part;
        }
    path[length] = 0;
    return true;
}

} // namespace

cShell32Dll::cShell32Dll(const wchar_t* path) noexcept : CDll(path)
{
    for (const Binding& row : bindings) GetProcAddress(row.name, record_.report, &(functions_.*row.slot));
}

cShell32Dll& cShell32Dll::getStatic() noexcept
{
    return cStaticObjectCS<cShell32Dll>::getStatic(L"cShell32Dll::getStatic");
}

bool cShell32Dll::getDocumentsFolder(wchar_t (&path)[DLL_PATH_UNITS]) noexcept
{
    constexpr wchar_t OPERATION[] = L"cShell32Dll::getDocumentsFolder";
    const TracedEntry entry(record_.lock, OPERATION);
    if (functions_.getSpecialFolderPathW)
        return asFunction<decltype(&::SHGetSpecialFolderPathW)>(functions_.getSpecialFolderPathW)(
                   nullptr, path, DOCUMENTS, FALSE) != 0;
    if (!requireFunction(*this, functions_.getSpecialFolderLocation, OPERATION)) return false;
    PIDLIST_ABSOLUTE items = nullptr;
    const HRESULT found = asFunction<decltype(&::SHGetSpecialFolderLocation)>(functions_.getSpecialFolderLocation)(
        nullptr, DOCUMENTS, &items);
    if (FAILED(found) || !items) return buildProfilePath(path);
    bool done = false;
    if (requireFunction(*this, functions_.getPathFromIdListW, OPERATION))
        done = asFunction<decltype(&::SHGetPathFromIDListW)>(functions_.getPathFromIdListW)(items, path) != 0;
    IMalloc* allocator = nullptr;
    if (!requireFunction(*this, functions_.getMalloc, OPERATION))
        done = false;
    else if (SUCCEEDED(asFunction<decltype(&::SHGetMalloc)>(functions_.getMalloc)(&allocator)) && allocator) {
        allocator->Free(items);
        allocator->Release();
    }
    return done;
}

} // namespace toolbelt
