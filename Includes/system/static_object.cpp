#include "Includes/system/static_object.h"

namespace toolbelt {

template <>
cMBStr& cStaticObjectCS<cMBStr>::getStatic(const wchar_t* operation, const std::source_location& where) noexcept
{
    const TracedEntry entry(lock(), operation, where);
    static cMBStr object;
    return object;
}

template <>
cTracedLock& cStaticObjectCS<cMBStr>::lock() noexcept
{
    static cTracedLock lock;
    return lock;
}

} // namespace toolbelt
