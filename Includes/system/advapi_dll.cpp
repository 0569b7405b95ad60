#include "Includes/system/advapi_dll.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstddef>

#include "Includes/system/process_end.h"
#include "Includes/system/static_object.h"

namespace toolbelt {
namespace {

static_assert(offsetof(AdvApiRecord, step) == 4 && offsetof(AdvApiRecord, serviceManager) == 8);
static_assert(offsetof(AdvApiRecord, functions) == 12 && sizeof(AdvApiFunctions) == 32 * sizeof(void*));

struct Binding
{
    void* AdvApiFunctions::*slot;
    const char* name;
    const char* otherName = nullptr; // tried for the same slot
};

using Functions = AdvApiFunctions;

constexpr Binding required[] = {
    {&Functions::openSCManagerA, "OpenSCManagerA"},
    {&Functions::createServiceA, "CreateServiceA"},
    {&Functions::startServiceA, "StartServiceA"},
    {&Functions::openServiceA, "OpenServiceA"},
    {&Functions::setEntriesInAclA, "SetEntriesInAclA"},
    {&Functions::closeServiceHandle, "CloseServiceHandle"},
    {&Functions::allocateAndInitializeSid, "AllocateAndInitializeSid"},
    {&Functions::initializeSecurityDescriptor, "InitializeSecurityDescriptor"},
    {&Functions::setSecurityDescriptorDacl, "SetSecurityDescriptorDacl"},
};

constexpr Binding optional[] = {
    {&Functions::deleteService, "DeleteServiceA", "DeleteService"},
    {&Functions::controlService, "ControlServiceA", "ControlService"},
    {&Functions::queryServiceStatus, "QueryServiceStatus"},
    {&Functions::openSCManagerW, "OpenSCManagerW"},
    {&Functions::createServiceW, "CreateServiceW"},
    {&Functions::startServiceW, "StartServiceW"},
    {&Functions::openServiceW, "OpenServiceW"},
    {&Functions::setEntriesInAclW, "SetEntriesInAclW"},
    {&Functions::regDeleteKeyExA, "RegDeleteKeyExA"},
    {&Functions::regDeleteKeyExW, "RegDeleteKeyExW"},
    {&Functions::revertToSelf, "RevertToSelf"},
    {&Functions::lookupPrivilegeValueA, "LookupPrivilegeValueA", "LookupPrivilegeValue"},
    {&Functions::lookupPrivilegeValueW, "LookupPrivilegeValueW"},
    {&Functions::logonUserW, "LogonUserW"},
    {&Functions::logonUserA, "LogonUserA"},
    {&Functions::impersonateNamedPipeClient, "ImpersonateNamedPipeClient"},
    {&Functions::impersonateLoggedOnUser, "ImpersonateLoggedOnUser"},
    {&Functions::createProcessWithLogonW, "CreateProcessWithLogonW"},
    {&Functions::queryServiceConfigW, "QueryServiceConfigW"},
    {&Functions::changeServiceConfigW, "ChangeServiceConfigW"},
    {&Functions::openProcessToken, "OpenProcessToken"},
    {&Functions::getTokenInformation, "GetTokenInformation"},
    {&Functions::logonUserExW, "LogonUserExW"},
};

static_assert(sizeof(required) / sizeof(Binding) + sizeof(optional) / sizeof(Binding) ==
              sizeof(Functions) / sizeof(void*));

} // namespace

CAdvAPIDll::~CAdvAPIDll()
{
    if (binding_.serviceManager && record_.module == boundModule_ && !processIsEnding())
        asFunction<decltype(&::CloseServiceHandle)>(binding_.functions.closeServiceHandle)(
            static_cast<SC_HANDLE>(binding_.serviceManager));
}

CAdvAPIDll& CAdvAPIDll::getStatic() noexcept
{
    return cStaticObjectCS<CAdvAPIDll>::getStatic(L"CAdvAPIDll::getStatic");
}

bool CAdvAPIDll::bind(const wchar_t* path) noexcept
{
    const TracedEntry entry(record_.lock, L"CAdvAPIDll::bind");
    if (binding_.attempted) return record_.status == DLL_DONE;
    binding_.attempted = 1;
    if (!bindAll(path)) return false;
    openServiceManager();
    return true;
}

bool CAdvAPIDll::bindAll(const wchar_t* path) noexcept
{
    if (!Load(path)) return false;
    boundModule_ = record_.module;
    binding_.step = ADVAPI_FIRST_STEP;
    for (const Binding& row : required)
        if (!bindNext(row.name, &(binding_.functions.*row.slot))) return false;
    for (const Binding& row : optional)
        if (!bindNext(row.name, &(binding_.functions.*row.slot)) && row.otherName)
            bindNext(row.otherName, &(binding_.functions.*row.slot));
    return true;
}

bool CAdvAPIDll::bindNext(const char* name, void** slot) noexcept
{
    ++binding_.step;
    return GetProcAddress(name, slot);
}

bool CAdvAPIDll::GetProcAddress(const char* name, void** out) noexcept
{
    bool report = false;
    {
        const TracedEntry entry(record_.lock, L"CAdvAPIDll::GetProcAddress");
        *out = lookUp(name);
        report = !*out && record_.module && record_.report;
    }
    if (report) showMissing(name);
    return *out != nullptr;
}

void CAdvAPIDll::openServiceManager() noexcept
{
    constexpr DWORD ALL_ACCESS = 0xF003F;
    const auto open = asFunction<decltype(&::OpenSCManagerA)>(binding_.functions.openSCManagerA);
    binding_.serviceManager = open(nullptr, nullptr, ALL_ACCESS);
    if (!binding_.serviceManager) binding_.step = static_cast<std::int32_t>(GetLastError() | 0x80000000u);
    // Whoever needs the manager sees that its handle is null; the functions are bound all the same.
    record_.status = DLL_DONE;
    binding_.step = ADVAPI_BOUND;
}

} // namespace toolbelt
