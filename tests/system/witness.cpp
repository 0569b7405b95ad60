// A program that writes its command line, in UTF-16, into the file that the environment names. It stands in for
// PowerShell and for what the shell opens.
#include <windows.h>

int main()
{
    wchar_t path[MAX_PATH], unfinished[MAX_PATH + 4];
    if (GetEnvironmentVariableW(L"TOOLBELT_WITNESS", path, MAX_PATH) == 0) return 1;
    lstrcpyW(unfinished, path);
    lstrcatW(unfinished, L".new");
    const HANDLE file = CreateFileW(unfinished, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    const wchar_t* const line = GetCommandLineW();
    DWORD written = 0;
    WriteFile(file, line, static_cast<DWORD>(lstrlenW(line) * sizeof(wchar_t)), &written, nullptr);
    CloseHandle(file);
    return MoveFileW(unfinished, path) ? 0 : 1;
}
