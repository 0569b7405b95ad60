// A program that writes its command line, in UTF-16, into the file that the environment names; nobody can read that
// file before it is whole. It stands in for PowerShell and for what the shell opens.
#include <windows.h>

int main()
{
    wchar_t path[MAX_PATH];
    if (GetEnvironmentVariableW(L"TOOLBELT_WITNESS", path, MAX_PATH) == 0) return 1;
    const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    const wchar_t* const line = GetCommandLineW();
    DWORD written = 0;
    WriteFile(file, line, static_cast<DWORD>(lstrlenW(line) * sizeof(wchar_t)), &written, nullptr);
    return !CloseHandle(file);
}
