// CAdvAPIDll: the security and service functions of "advapi32.dll", bound once, and the handle of the local service
// control manager. The functions that every supported system has are required; of the others, a null slot means that
// this system does not have it: test one before the call.
//
// The table is bound to one library. Look other names up through a CDll of your own, and leave CDll's Load and Unload
// alone: they change the status that bind answers with, and after the latter two the slots point into a library that is
// gone. The destructor closes the service manager only while the library that was bound is the one that is loaded.
#pragma once

#include "Includes/system/dll.h"

namespace toolbelt {

// A slot for each function in the order of binding. Call one as asFunction<decltype(&::OpenSCManagerA)>(slot).
struct AdvApiFunctions
{
    // Required.
    void* openSCManagerA;
    void* createServiceA;
    void* startServiceA;
    void* openServiceA;
    void* setEntriesInAclA;
    void* closeServiceHandle;
    void* allocateAndInitializeSid;
    void* initializeSecurityDescriptor;
    void* setSecurityDescriptorDacl;
    // Null where the system has none.
    void* deleteService;
    void* controlService;
    void* queryServiceStatus;
    void* openSCManagerW;
    void* createServiceW;
    void* startServiceW;
    void* openServiceW;
    void* setEntriesInAclW;
    void* regDeleteKeyExA;
    void* regDeleteKeyExW;
    void* revertToSelf;
    void* lookupPrivilegeValueA;
    void* lookupPrivilegeValueW;
    void* logonUserW;
    void* logonUserA;
    void* impersonateNamedPipeClient;
    void* impersonateLoggedOnUser;
    void* createProcessWithLogonW;
    void* queryServiceConfigW;
    void* changeServiceConfigW;
    void* openProcessToken;
    void* getTokenInformation;
    void* logonUserExW;
};

struct AdvApiRecord
{
    std::uint8_t attempted = 0; // binding is done once, whatever comes of it
    std::int32_t step = 0;      // 1000 and the lookups made so far; ADVAPI_BOUND at the end
    void* serviceManager = nullptr;
    AdvApiFunctions functions = {};
};

inline constexpr std::int32_t ADVAPI_FIRST_STEP = 1000;
inline constexpr std::int32_t ADVAPI_BOUND = -2;

class CAdvAPIDll : public CDll
{
public:
    CAdvAPIDll() noexcept = default;
    ~CAdvAPIDll();

    // The process-wide object, not bound yet.
    TB_API static CAdvAPIDll& getStatic() noexcept;
    // Binds on the first call; later ones only tell whether the status is DLL_DONE. A service manager that cannot be
    // opened is no failure: its handle is null.
    TB_API bool bind(const wchar_t* path = L"advapi32.dll") noexcept;
    // As CDll's; a miss is shown when the library was loaded with a report.
    TB_API bool GetProcAddress(const char* name, void** out) noexcept;

    const AdvApiRecord& binding() const noexcept { return binding_; }

private:
    bool bindAll(const wchar_t* path) noexcept;
    bool bindNext(const char* name, void** slot) noexcept;
    void openServiceManager() noexcept;

    AdvApiRecord binding_;
    void* boundModule_ = nullptr;
};

} // namespace toolbelt
