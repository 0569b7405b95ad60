// system: what the program runs on, as the library sees it.
#include <windows.h>

#include "Includes/system/dll.h"
#include "Includes/system/file_version.h"
#include "Includes/system/system_description.h"
#include "Includes/system/wow64.h"
#include "cli/command.h"
#include "cli/files.h"
#include "cli/results.h"
#include "cli/text.h"
#include "speed/tiers.h"

namespace toolbelt::cli {
namespace {

// The version that the DLL's own resource tells; it need not be the one that this program was built with.
std::string libraryVersion()
{
    const std::string unknown = "unknown";
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(GetModuleHandleW(L"toolbelt.dll"), path, MAX_PATH);
    CDll library(L"version.dll");
    void *getSize = nullptr, *getBlock = nullptr;
    if (length == 0 || length >= MAX_PATH || !library.GetProcAddress("GetFileVersionInfoSizeW", 0, &getSize) ||
        !library.GetProcAddress("GetFileVersionInfoW", 0, &getBlock))
        return unknown;
    const DWORD size = asFunction<decltype(&::GetFileVersionInfoSizeW)>(getSize)(path, nullptr);
    Bytes block(size);
    const wchar_t* text = nullptr;
    std::uint32_t units = 0;
    if (size == 0 || !asFunction<decltype(&::GetFileVersionInfoW)>(getBlock)(path, 0, size, block.data()) ||
        !QueryFileVersion(block.data(), &text, &units, size / sizeof(wchar_t)))
        return unknown;
    return toUtf8(text);
}

std::string runsOn64()
{
    if (!IsWow64(GetModuleHandleW(L"kernel32.dll"), GetCurrentProcess()))
        throw Failure("system", "the system does not tell whether it has 64 bits", EXIT_SYSTEM);
    return wow64Answer() ? "yes" : "no";
}

} // namespace

Action prepareSystem(Parser& parser)
{
    parser.footer("Example: toolbelt system");
    return []() {
        printResult({"system",
                     toUtf8(SystemDescription()),
                     {{"32-on-64", runsOn64()},
                      {"library version", libraryVersion()},
                      {"processor features", speed::featuresInUse()}}});
        return EXIT_DONE;
    };
}

} // namespace toolbelt::cli
