#include "Includes/system/file_version.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "Includes/stringFuncs/formatter.h"
#include "Includes/system/dll.h"
#include "Includes/system/static_object.h"

namespace toolbelt {
namespace {

constexpr std::int32_t PATH_UNITS = 256;

struct Translation
{
    std::uint16_t language;
    std::uint16_t codePage;
};
static_assert(sizeof(Translation) == 4);

class VersionLibrary : public CDll
{
public:
    VersionLibrary() noexcept : CDll(L"version.dll", "VerQueryValueW"), query_(asFunction<Query>(getProc())) {}

    bool read(const void* block, wchar_t* path, const void** value, std::uint32_t* length) const noexcept
    {
        return query_ && query_(block, path, value, length) != FALSE;
    }

private:
    using Query = BOOL(WINAPI*)(const void* block, wchar_t* path, const void** value, std::uint32_t* length);
    Query query_;
};

} // namespace

bool QueryFileVersion(const void* block, const wchar_t** value, std::uint32_t* length, std::uint32_t maximum) noexcept
{
    *value = nullptr;
    *length = 0;
    if (!block) return false;
    const VersionLibrary& library = cStaticObjectCS<VersionLibrary>::getStatic();
    wchar_t path[PATH_UNITS]; // written to by the query on old systems
    formatWide(path, PATH_UNITS, L"\\VarFileInfo\\Translation");
    const void* found = nullptr;
    std::uint32_t bytes = 0;
    if (!library.read(block, path, &found, &bytes) || !found) return false;
    const auto* const translations = static_cast<const Translation*>(found);
    for (std::uint32_t i = 0; i < bytes / sizeof(Translation) && *length == 0; ++i) {
        formatWide(path, PATH_UNITS, L"\\StringFileInfo\\%04x%04x\\%s", translations[i].language,
                   translations[i].codePage, L"FileVersion");
        const void* text = nullptr;
        std::uint32_t units = 0;
        if (!library.read(block, path, &text, &units) || units == 0) continue;
        *value = static_cast<const wchar_t*>(text);
        *length = units;
    }
    return *length != 0 && *value && *length <= maximum;
}

} // namespace toolbelt
