// A library that somebody left where a system's is looked for: it tells its own path when it is loaded.
#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void*)
{
    if (reason != DLL_PROCESS_ATTACH) return TRUE;
    char path[MAX_PATH + 1];
    DWORD length = GetModuleFileNameA(module, path, MAX_PATH), written = 0;
    path[length++] = '\n';
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), path, length, &written, nullptr);
    return TRUE;
}
