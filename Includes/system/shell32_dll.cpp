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
    FolderSearch search;
    {
        const TracedEntry entry(record_.lock, OPERATION);
        search = findDocumentsFolder(path);
    }
    if (search.missing.line() != 0) return requireFunction(*this, nullptr, OPERATION, search.missing);
    return search.done || (search.hasNoList && buildProfilePath(path));
}

cShell32Dll::FolderSearch cShell32Dll::findDocumentsFolder(wchar_t (&path)[DLL_PATH_UNITS]) noexcept
{
    FolderSearch search;
    const auto isThere = [&](const void* function, std::source_location where = std::source_location::current()) {
        if (!function && search.missing.line() == 0) search.missing = where;
        return function != nullptr;
    };
    if (functions_.getSpecialFolderPathW) {
        search.done = asFunction<decltype(&::SHGetSpecialFolderPathW)>(functions_.getSpecialFolderPathW)(
                          nullptr, path, DOCUMENTS, FALSE) != 0;
        return search;
    }
    if (!isThere(functions_.getSpecialFolderLocation)) return search;
    PIDLIST_ABSOLUTE items = nullptr;
    const HRESULT found = asFunction<decltype(&::SHGetSpecialFolderLocation)>(functions_.getSpecialFolderLocation)(
        nullptr, DOCUMENTS, &items);
    search.hasNoList = FAILED(found) || !items;
    if (search.hasNoList) return search;
    if (isThere(functions_.getPathFromIdListW))
        search.done = asFunction<decltype(&::SHGetPathFromIDListW)>(functions_.getPathFromIdListW)(items, path) != 0;
    IMalloc* allocator = nullptr;
    if (isThere(functions_.getMalloc) &&
        SUCCEEDED(asFunction<decltype(&::SHGetMalloc)>(functions_.getMalloc)(&allocator)) && allocator) {
        allocator->Free(items);
        allocator->Release();
    }
    return search;
}

} // namespace toolbelt
