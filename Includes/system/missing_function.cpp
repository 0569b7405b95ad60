#include "Includes/system/missing_function.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "Includes/system/message_box.h"
#include "Includes/system/resource_library.h"
#include "Includes/system/system_description.h"

namespace toolbelt {
namespace {

const wchar_t* fileNameOf(const wchar_t* path)
{
    const wchar_t* name = path;
    for (; *path; ++path)
        if (*path == L'\\') name = path + 1;
    return name;
}

} // namespace

bool requireFunction(const CDll& library, const void* function, const wchar_t* operation,
                     const std::source_location& where) noexcept
{
    if (function) return true;
    wchar_t program[DLL_PATH_UNITS], path[DLL_PATH_UNITS];
    program[GetModuleFileNameW(nullptr, program, DLL_PATH_UNITS - 1)] = 0;
    library.copyFullPath(path);
    cWCS text;
    formatMissingFunction(text, path, operation, where.line(), SystemDescription());
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
