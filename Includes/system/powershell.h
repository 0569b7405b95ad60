// Running a PowerShell command.
#pragma once

#include <cstdint>

#include "Includes/stringFuncs/wcs.h"
#include "crypto/base/export.h"

namespace toolbelt {

// Starts the command and does not wait for it. 0, or a system error code: 2 when no PowerShell can be found, or only at
// a path of 260 units and more, even for an empty or null command, which otherwise runs nothing; 8 when memory has run
// out. The command goes into double quotes as it is.
TB_API std::uint32_t RunPowerShell(const wchar_t* command) noexcept;
// The same with the folders, separated by semicolons, in which "powershell.exe" is sought.
std::uint32_t runPowerShellFrom(const wchar_t* folders, const wchar_t* command) noexcept;

// The command line; null when memory has run out.
wchar_t* formatPowerShellLine(cWCS& line, const wchar_t* program, const wchar_t* command) noexcept;

} // namespace toolbelt
