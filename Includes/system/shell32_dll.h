// cShell32Dll: the folder and icon functions of "shell32.dll". A null slot means that this system does not have the
// function.
#pragma once

#include "Includes/system/dll.h"

namespace toolbelt {

// A slot for each function in the order of binding; names without A or W are the 8-bit ones. Call one as
// asFunction<decltype(&::SHGetMalloc)>(slot).
struct ShellFunctions
{
    void* getSpecialFolderPathA;
    void* getSpecialFolderPathW;
    void* getPathFromIdListW;
    void* getSpecialFolderLocation;
    void* browseForFolder;
    void* getPathFromIdList;
    void* getMalloc;
    void* findExecutableA;
    void* extractIconW;
    void* extractIconA;
    void* extractIconExW;
    void* extractIconExA;
    void* getFileInfoA;
    void* getFileInfo;
};

class cShell32Dll : public CDll
{
public:
    // Loads the library and binds what it has.
    explicit cShell32Dll(const wchar_t* path = L"shell32.dll") noexcept;

    // The process-wide object.
    TB_API static cShell32Dll& getStatic() noexcept;
    // The user's documents folder, without a backslash at its end. On failure the path is not to be used; a box has
    // told of a function that this system does not have.
    TB_API bool getDocumentsFolder(wchar_t (&path)[DLL_PATH_UNITS]) noexcept;

    const ShellFunctions& functions() const noexcept { return functions_; }

private:
    struct FolderSearch
    {
        bool done = false;
        bool hasNoList = false;       // the system does not know the folder
        std::source_location missing; // where the first function that it needs is not there; line 0: nowhere
    };
    FolderSearch findDocumentsFolder(wchar_t (&path)[DLL_PATH_UNITS]) noexcept;

    ShellFunctions functions_ = {};
};

} // namespace toolbelt
