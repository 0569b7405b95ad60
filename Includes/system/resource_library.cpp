#include "Includes/system/resource_library.h"

#include <atomic>

namespace toolbelt {
namespace {

std::atomic<const ResourceLibrary*> current = nullptr;

} // namespace

const ResourceLibrary* setResourceLibrary(const ResourceLibrary* library) noexcept
{
    return current.exchange(library);
}

const ResourceLibrary* loadedResourceLibrary() noexcept
{
    const ResourceLibrary* const library = current;
    return library && library->status == 0 ? library : nullptr;
}

bool isRightToLeft() noexcept
{
    const ResourceLibrary* const library = loadedResourceLibrary();
    return library && library->rightToLeft != 0;
}

} // namespace toolbelt
