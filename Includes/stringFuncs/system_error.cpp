// The operating system's words for an error code. Windows only.
#include "Includes/stringFuncs/wcs.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace toolbelt {
namespace {

constexpr std::uint32_t LAST_ERROR_OF_THREAD = 0xFFFFFFFF;
constexpr DWORD DEFAULT_LANGUAGE = 0x0400;

} // namespace

const wchar_t* cWCS::SystemErrorText(std::uint32_t code)
{
    if (code == LAST_ERROR_OF_THREAD) code = GetLastError();
    cWCS result;
    wchar_t* message = nullptr;
    const DWORD written =
        FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM,
                       nullptr, code, DEFAULT_LANGUAGE, reinterpret_cast<wchar_t*>(&message), 0, nullptr);
    if (written)
        result.Assign(message);
    else
        result.Format(L"FormatMessage error %d, Original error %d", GetLastError(), code);
    LocalFree(message);
    if (result.text() == nullptr) return L"<NULL>";
    std::int32_t end = result.length();
    while (end > 0 && (result.text()[end - 1] == L'\r' || result.text()[end - 1] == L'\n')) --end;
    result.SetLength(end);
    const std::int32_t plain = result.length();
    result.AppendFormat(L" (0x%X)", code);
    if (result.length() == plain) return L"<NULL>";
    swap(result);
    return text();
}

} // namespace toolbelt
