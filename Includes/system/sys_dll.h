// CSysDll: a system library whose version is read when it is loaded, and which stays loaded: other parts of the process
// may have come to rely on it.
#pragma once

#include "Includes/system/dll.h"

namespace toolbelt {

// As the library's "DllGetVersion" fills it.
struct DllVersionRecord
{
    std::uint32_t size; // 20, set before the call
    std::uint32_t major;
    std::uint32_t minor;
    std::uint32_t build;
    std::uint32_t platform;
};

class TB_API CSysDll : public CDll
{
public:
    CSysDll() noexcept = default;
    ~CSysDll();

    // Releases the library only while setReleaseSystemLibraries permits it; otherwise nothing changes.
    void Unload() noexcept override;
    // True at once when a library is loaded. Otherwise CDll::Load, then the version; false when the library does not
    // tell its version, and it is loaded all the same.
    virtual bool Load(const wchar_t* path, const char* function = nullptr, std::int32_t report = 0,
                      std::int32_t alteredSearchPath = 0) noexcept;

    // All zeros when the library does not tell.
    const DllVersionRecord& version() const noexcept { return version_; }

private:
    DllVersionRecord version_ = {};
};

// Whether CSysDll objects release their libraries; false from the start. Returns what was set before.
TB_API bool setReleaseSystemLibraries(bool release) noexcept;

} // namespace toolbelt
