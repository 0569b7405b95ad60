#include "Includes/system/missing_function.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "Includes/system/message_box.h"
#include "Includes/system/resource_library.h"
#include "Includes/system/system_description.h"

namespace toolbelt {
namespace {

using ModulePath = wchar_t[DLL_PATH_UNITS];

const wchar_t* fileNameOf(const wchar_t* path)
{
    const wchar_t* name = path;
    for (; *path; ++path)
        if (*path == L'\\') name = path + 1;
    return name;
}

// A path that is too long for the buffer is cut.
void readModulePath(ModulePath& path, void* module)
{
    const DWORD length = GetModuleFileNameW(static_cast<HMODULE>(module), path, DLL_PATH_UNITS);
    path[length < DLL_PATH_UNITS ? length : DLL_PATH_UNITS - 1] = 0;
}

} // namespace

bool requireFunction(const CDll& library, const void* function, const wchar_t* operation,
                     const std::source_location& where) noexcept
{
    if (function) return true;
    ModulePath program, loaded;
    readModulePath(program, nullptr);
    if (library.record().module) readModulePath(loaded, library.record().module);
    cWCS text;
    formatMissingFunction(text, library.record().module ? loaded : library.record().path, operation, where.line(),
                          SystemDescription());
    showMessage(nullptr, text.text(), fileNameOf(program), missingFunctionFlags());
    return false;
}

void formatMissingFunction(cWCS& text, const wchar_t* fullPath, const wchar_t* operation, std::uint32_t line,
                           const wchar_t* systemDescription) noexcept
{
    text.Format(L"%s - Invalid function is detected!\nFunction: %s\nLine: %d\n%s\nDll path: %s", fileNameOf(fullPath),
                operation, line, systemDescription, fullPath);
}

std::uint32_t missingFunctionFlags() noexcept
{
    return MESSAGE_TOPMOST | MESSAGE_ICON_STOP | (isRightToLeft() ? MESSAGE_RIGHT_TO_LEFT : 0);
}

} // namespace toolbelt
