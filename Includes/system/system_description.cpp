#include "Includes/system/system_description.h"

#include "Includes/system/static_object.h"

namespace toolbelt {
namespace {

class DescriptionText : public cWCStr
{};
using Holder = cStaticObjectCS<DescriptionText>;

} // namespace

const wchar_t* SystemDescription() noexcept
{
    DescriptionText& text = Holder::getStatic();
    const TracedEntry entry(Holder::lock(), L"SystemDescription");
    if (text.length() == 0) return describeSystem(text, systemVersion().record);
    return text.text();
}

const wchar_t* describeSystem(cWCS& text, const VersionRecord& version) noexcept
{
    return text.Format(L"OS: PlatformId %X, Major %d, Minor %d, Build %d ", version.platform, version.majorVersion,
                       version.minorVersion, version.buildNumber);
}

} // namespace toolbelt
