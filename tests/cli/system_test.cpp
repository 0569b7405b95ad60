// toolbelt.exe system: what it tells is what the system itself says.
#include <windows.h>

#include <gtest/gtest.h>

#include "tests/cli/process.h"

namespace toolbelt::test {
namespace {

TEST(SystemTool, TellsTheSystemAndTheLibrary)
{
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof version;
    ASSERT_TRUE(GetVersionExW(&version));
    BOOL isOn64 = FALSE;
    ASSERT_TRUE(IsWow64Process(GetCurrentProcess(), &isOn64));
    const Outcome told = run({"system"});
    const std::string build = ", Build " + std::to_string(version.dwBuildNumber) + " ";
    const std::string own = run({"--version"}).out.substr(std::string("toolbelt ").size()); // and the line's end
    EXPECT_TRUE(told.out.starts_with("system: OS: PlatformId 2, Major " + std::to_string(version.dwMajorVersion) +
                                     ", Minor " + std::to_string(version.dwMinorVersion) + build +
                                     "\n  32-on-64: " + (isOn64 ? "yes" : "no") + "\n  library version: " + own))
        << told.out << told.err;
    const Outcome json = run({"--json", "system"});
    EXPECT_TRUE(contains(json.out, build)) << json.out;
}

} // namespace
} // namespace toolbelt::test
