// What the user sees when an operation needs a function that this system's library does not have.
#pragma once

#include <cstdint>
#include <source_location>

#include "Includes/stringFuncs/wcs.h"
#include "Includes/system/dll.h"
#include "crypto/base/export.h"

namespace toolbelt {

// True when the function is there. Otherwise false, after a box that names the library, the operation
// ("CAdvAPIDll::CheckAdministratorPrivileges" for example) and its line, the system, and the library's path.
TB_API bool requireFunction(const CDll& library, const void* function, const wchar_t* operation,
                            const std::source_location& where = std::source_location::current()) noexcept;

// The box's text and flags. fullPath is the library's, and its file name opens the text.
void formatMissingFunction(cWCS& text, const wchar_t* fullPath, const wchar_t* operation, std::uint32_t line,
                           const wchar_t* systemDescription) noexcept;
std::uint32_t missingFunctionFlags() noexcept;

} // namespace toolbelt
