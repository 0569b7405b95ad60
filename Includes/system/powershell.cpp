#include "Includes/system/powershell.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace toolbelt {
namespace {

constexpr UINT STARTED = 33; // what the system's older starters give for success: more than 31

UINT start(const wchar_t* program, wchar_t* line)
{
    STARTUPINFOW how = {};
    how.cb = sizeof(how);
    how.dwFlags = STARTF_USESHOWWINDOW;
    how.wShowWindow = SW_SHOWNORMAL; // a command that asks something must be seen
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(program, line, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &how, &process)) return 0;
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return STARTED;
}

// The system's own folders alone: into others, and into the current one, anybody may have put a program.
std::uint32_t listFolders(cWCS& folders)
{
    wchar_t system[MAX_PATH];
    const UINT length = GetSystemDirectoryW(system, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return ERROR_FILE_NOT_FOUND;
    const bool whole =
        folders.Assign(system) && folders.Append(L"\\WindowsPowerShell\\v1.0;") && folders.Append(system);
    return whole ? 0 : ERROR_NOT_ENOUGH_MEMORY;
}

} // namespace

wchar_t* formatPowerShellLine(cWCS& line, const wchar_t* program, const wchar_t* command) noexcept
{
    // Put together piece by piece: the formatter would cut a long command, and half a command is another command.
    const bool whole = line.Assign(L"\"") && line.Append(program) && line.Append(L"\" -Command \"") &&
                       line.Append(command) && line.Append(L"\"");
    return whole ? line.text() : nullptr;
}

std::uint32_t RunPowerShell(const wchar_t* command) noexcept
{
    cWCS folders;
    const std::uint32_t error = listFolders(folders);
    return error ? error : runPowerShellFrom(folders.text(), command);
}

std::uint32_t runPowerShellFrom(const wchar_t* folders, const wchar_t* command) noexcept
{
    wchar_t program[MAX_PATH];
    const DWORD length = SearchPathW(folders, L"powershell.exe", nullptr, MAX_PATH, program, nullptr);
    if (length == 0 || length >= MAX_PATH) return ERROR_FILE_NOT_FOUND;
    if (!command || !*command) return 0;
    cWCS line;
    wchar_t* const text = formatPowerShellLine(line, program, command);
    if (!text) return ERROR_NOT_ENOUGH_MEMORY;
    return start(program, text) < 32 ? GetLastError() : 0;
}

} // namespace toolbelt
