// Code pages: which one multibyte text has, told from the operating system's version, and the system's own conversions.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"

namespace toolbelt {

constexpr std::int32_t codePageAnsi = 0;
constexpr std::int32_t codePageUtf8 = 65001;

// VersionRecord: the operating system's version record (OSVERSIONINFOW).
struct VersionRecord
{
    std::uint32_t size = 276; // what the system must find there before it fills the rest
    std::uint32_t majorVersion = 0;
    std::uint32_t minorVersion = 0;
    std::uint32_t buildNumber = 0;
    std::uint32_t platform = 0; // 1: the 16/32-bit consumer systems, 2: the NT family
    char16_t servicePack[128] = {};
};
static_assert(sizeof(VersionRecord) == 276);

// VersionFlags: what is asked of a version again and again.
struct VersionFlags
{
    bool ntFamily; // platform 2
    bool nt51;     // ... and at least 5.1
    bool ntAbove6; // ... and a major version above 6
};

// The code page of multibyte text on such a system: 0 (ANSI) on the consumer systems 4.0 to 4.10, else 65001 (UTF-8).
std::int32_t codePageOf(const VersionRecord& version) noexcept;
VersionFlags flagsOf(const VersionRecord& version) noexcept;

// SystemVersion: the running system's record and its flags, read once. Natively it stands for a system of today.
struct SystemVersion
{
    VersionRecord record;
    VersionFlags flags;
};
TB_API const SystemVersion& systemVersion() noexcept;
// The process-wide code page of multibyte text.
TB_API std::int32_t DefaultCodePage() noexcept;

// Converts byteCount bytes (units) of a code page (-1: DefaultCodePage) into out and returns the units (bytes) written;
// without out it returns what would be written. 0 when nothing can be: no input, an unknown code page, capacity too
// small. Malformed UTF-8 and lone surrogates on the way to it become U+FFFD; for other code pages the system chooses
// what stands for what they lack. Input and output must not overlap.
std::int32_t multibyteToWide(std::int32_t codePage, const char* bytes, std::int32_t byteCount, wchar_t* out,
                             std::int32_t capacity) noexcept;
std::int32_t wideToMultibyte(std::int32_t codePage, const wchar_t* units, std::int32_t count, char* out,
                             std::int32_t capacity) noexcept;

// Whether the byte opens a character of two bytes in a double-byte code page.
bool isLeadByte(std::int32_t codePage, unsigned char byte) noexcept;

} // namespace toolbelt
