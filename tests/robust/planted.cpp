// A library that somebody left where a system's is looked for: when it is loaded, it adds its own path to the file that
// the environment names.
#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void*)
{
    char log[MAX_PATH], path[MAX_PATH + 1];
    if (reason != DLL_PROCESS_ATTACH || GetEnvironmentVariableA("TOOLBELT_PLANTED", log, MAX_PATH) == 0) return TRUE;
    DWORD length = GetModuleFileNameA(module, path, MAX_PATH), written = 0;
    path[length++] = '\n';
    const HANDLE file = CreateFileA(log, FILE_APPEND_DATA, FILE_SHARE_READ, nullptr, OPEN_ALWAYS, 0, nullptr);
    WriteFile(file, path, length, &written, nullptr);
    CloseHandle(file);
    return TRUE;
}
