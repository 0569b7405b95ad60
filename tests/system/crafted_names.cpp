// The functions of the system's libraries that the tests bind but never call: a name and an address of its own is all
// that binding can tell.

extern "C" {
__declspec(dllexport) char CreateServiceA, StartServiceA, OpenServiceA, SetEntriesInAclA, AllocateAndInitializeSid,
    InitializeSecurityDescriptor, SetSecurityDescriptorDacl, DeleteServiceA, DeleteService, ControlServiceA,
    ControlService, QueryServiceStatus, OpenSCManagerW, CreateServiceW, StartServiceW, OpenServiceW, SetEntriesInAclW,
    RegDeleteKeyExA, RegDeleteKeyExW, RevertToSelf, LookupPrivilegeValueA, LookupPrivilegeValue, LookupPrivilegeValueW,
    LogonUserW, LogonUserA, ImpersonateNamedPipeClient, ImpersonateLoggedOnUser, CreateProcessWithLogonW,
    QueryServiceConfigW, ChangeServiceConfigW, OpenProcessToken, GetTokenInformation, LogonUserExW;
__declspec(dllexport) char SHGetSpecialFolderPathA, SHBrowseForFolder, SHGetPathFromIDList, FindExecutableA,
    ExtractIconW, ExtractIconA, ExtractIconExW, ExtractIconExA, SHGetFileInfoA, SHGetFileInfo;
}
