#include "Includes/stringFuncs/conversion.h"

#include <atomic>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#endif

namespace toolbelt {
namespace {

SystemVersion readSystemVersion() noexcept
{
    SystemVersion version = {};
#if defined(_WIN32)
    static_assert(sizeof(OSVERSIONINFOW) == sizeof(VersionRecord));
    GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&version.record));
#else
    version.record.majorVersion = 10;
    version.record.platform = 2;
#endif
    version.flags = flagsOf(version.record);
    return version;
}

} // namespace

std::int32_t codePageOf(const VersionRecord& version) noexcept
{
    const bool oldest = version.platform == 1 && version.majorVersion == 4 && version.minorVersion <= 10;
    return oldest ? codePageAnsi : codePageUtf8;
}

VersionFlags flagsOf(const VersionRecord& version) noexcept
{
    const bool nt = version.platform == 2;
    const bool from51 = version.majorVersion > 5 || (version.majorVersion == 5 && version.minorVersion >= 1);
    return {nt, nt && from51, nt && version.majorVersion > 6};
}

const SystemVersion& systemVersion() noexcept
{
    static const SystemVersion version = readSystemVersion();
    return version;
}

std::int32_t DefaultCodePage() noexcept
{
    static std::atomic<std::int32_t> cached = -1;
    std::int32_t codePage = cached.load(std::memory_order_relaxed);
    if (codePage == -1) {
        codePage = codePageOf(systemVersion().record);
        cached.store(codePage, std::memory_order_relaxed);
    }
    return codePage;
}

#if defined(_WIN32)

std::int32_t multibyteToWide(std::int32_t codePage, const char* bytes, std::int32_t byteCount, wchar_t* out,
                             std::int32_t capacity) noexcept
{
    if (bytes == nullptr || byteCount <= 0) return 0;
    if (codePage == -1) codePage = DefaultCodePage();
    return MultiByteToWideChar(static_cast<UINT>(codePage), 0, bytes, byteCount, out, out ? capacity : 0);
}

std::int32_t wideToMultibyte(std::int32_t codePage, const wchar_t* units, std::int32_t count, char* out,
                             std::int32_t capacity) noexcept
{
    if (units == nullptr || count <= 0) return 0;
    if (codePage == -1) codePage = DefaultCodePage();
    return WideCharToMultiByte(static_cast<UINT>(codePage), 0, units, count, out, out ? capacity : 0, nullptr, nullptr);
}

bool isLeadByte(std::int32_t codePage, unsigned char byte) noexcept
{
    return IsDBCSLeadByteEx(static_cast<UINT>(codePage), byte) != FALSE;
}

#endif

} // namespace toolbelt
