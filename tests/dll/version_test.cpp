// The built file: which version it says it is. What it imports and exports is looked into by file_test.sh.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <vector>

namespace {

TEST(DllFile, SaysItsVersion)
{
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(LoadLibraryW(L"toolbelt.dll"), path, MAX_PATH);
    DWORD ignored = 0;
    std::vector<char> block(GetFileVersionInfoSizeW(path, &ignored));
    ASSERT_FALSE(block.empty());
    ASSERT_TRUE(GetFileVersionInfoW(path, 0, static_cast<DWORD>(block.size()), block.data()));
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT size = 0;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&fixed), &size));
    char version[64];
    std::snprintf(version, sizeof version, "%u.%u.%u", HIWORD(fixed->dwFileVersionMS), LOWORD(fixed->dwFileVersionMS),
                  HIWORD(fixed->dwFileVersionLS));
    EXPECT_STREQ(version, TOOLBELT_VERSION);
    wchar_t* text = nullptr;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\StringFileInfo\\040904B0\\ProductName",
                               reinterpret_cast<void**>(&text), &size));
    EXPECT_STREQ(text, L"Toolbelt");
}

} // namespace
