// The platform helpers.
#include <windows.h>

#include <filesystem>
#include <fstream>

#include "Includes/system/dll.h"
#include "Includes/system/file_version.h"
#include "Includes/system/mail_link.h"
#include "Includes/system/mapi_mail.h"
#include "Includes/system/percent_encode.h"
#include "Includes/system/powershell.h"
#include "Includes/system/system_description.h"
#include "Includes/system/wow64.h"
#include "tests/support/process_holdings.h"
#include "tests/support/vectors.h"
#include "tests/system/replaced.h"
#include "tests/system/support.h"

extern "C" {
extern void* createProcessSlot __asm__("__imp__CreateProcessW@40");
}

namespace toolbelt::test {
namespace {

TEST(Helpers, SystemDescriptionAndWow64)
{
    cWCS text;
    VersionRecord version;
    version.platform = 0x1F;
    version.majorVersion = 10;
    version.minorVersion = 0;
    version.buildNumber = 19045;
    EXPECT_STREQ(describeSystem(text, version), L"OS: PlatformId 1F, Major 10, Minor 0, Build 19045 ");
    OSVERSIONINFOW own = {};
    own.dwOSVersionInfoSize = 276;
    ASSERT_TRUE(GetVersionExW(&own));
    const wchar_t* const first = SystemDescription();
    EXPECT_EQ(first, L"OS: PlatformId 2, Major " + std::to_wstring(own.dwMajorVersion) + L", Minor " +
                         std::to_wstring(own.dwMinorVersion) + L", Build " + std::to_wstring(own.dwBuildNumber) + L" ");
    EXPECT_EQ(SystemDescription(), first);

    Calls calls;
    const CDll with(crafted().c_str()), without(craftedWithout({"IsWow64Process"}).c_str());
    Wow64Test fresh, old;
    EXPECT_EQ(isWow64(fresh, nullptr, nullptr), 0);
    calls.answers["IsWow64Process"] = 5;
    EXPECT_EQ(isWow64(fresh, with.record().module, nullptr), 5); // the function's own result
    EXPECT_EQ(fresh.answer, 1);
    EXPECT_EQ(isWow64(fresh, without.record().module, nullptr), 5); // at the address found first
    EXPECT_EQ(isWow64(old, without.record().module, nullptr), 1);
    EXPECT_EQ(old.answer, 0);
    const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    BOOL expected = FALSE;
    ASSERT_TRUE(IsWow64Process(GetCurrentProcess(), &expected));
    EXPECT_EQ(IsWow64(kernel, GetCurrentProcess()), 1);
    EXPECT_EQ(wow64Answer(), expected);
}

TEST(Helpers, FileVersionOfTheFirstTranslationThatHasOne)
{
    for (const Record& record : readVectors("version-resources.txt")) {
        SCOPED_TRACE(record.get("resource"));
        Bytes block = record.bytes("bytes");
        block.resize(block.size() + 4096); // where the query may write
        const std::string expected = record.has("version") ? record.get("version") : "";
        const std::uint32_t units = expected.empty() ? 0 : static_cast<std::uint32_t>(expected.size()) + 1;
        for (const std::uint32_t maximum : {5u, 6u, 100u}) {
            const wchar_t* value = L"before";
            std::uint32_t length = 99;
            EXPECT_EQ(QueryFileVersion(block.data(), &value, &length, maximum), units != 0 && units <= maximum);
            EXPECT_EQ(length, units);
            EXPECT_EQ(value != nullptr, units != 0);
            EXPECT_EQ(std::wstring(value ? value : L""), std::wstring(expected.begin(), expected.end()));
        }
        EXPECT_EQ(record.unread(), Strings());
    }
}

TEST(Helpers, PercentEncodingAndMailLinks)
{
    cWCS text;
    text.Assign(L">");
    EXPECT_TRUE(PercentEncode(L"a b-c%d\u0414Zz09_~/", text));
    EXPECT_STREQ(text.text(), L">a%20b-c%d%14Zz09%5F%7E%2F");
    EXPECT_TRUE(PercentEncode(nullptr, text) && PercentEncode(text.text() + 23, text));
    EXPECT_STREQ(text.text() + 23, L"%2F%2F");
    const std::pair<const wchar_t*, const wchar_t*> escapes[] = {
        {L"a%20b+%", L"a b+%"},           {L"%4", L"%4"},
        {L"%4g%zz", L"%4g%zz"},           {L"%D0%94%e4%C3", L"\u0414\u00E4\u00C3"},
        {L"%F0%9F%98%80", L"\U0001F600"}, {L"%C3%zz%E2%82", L"\u00C3%zz\u00E2\u0082"},
        {L"%EF%BF%BD", L"\uFFFD"}};
    for (const auto& [encoded, decoded] : escapes) {
        text.Assign(encoded);
        percentDecode(text);
        EXPECT_EQ(std::wstring(text.text(), static_cast<std::size_t>(text.length())), decoded);
    }

    const std::pair<const wchar_t*, const wchar_t*> links[] = {
        {L"mailto:a@b.c?subject=x%20y&body=l1%0D%0Al2&attach=C:\\a b&c.txt", L"a@b.c|x y|l1\r\nl2|C:\\a b&c.txt"},
        {L"mailto:r&d@b.c?body=no&attach=%41", L"r&d@b.c|||%41"},
        {L"mailto:a@b.c&attach=f?subject=g", L"a@b.c|g||f?subject=g"},
        {L"&attach=", L"|||"}};
    for (const auto& [link, expected] : links) {
        MailLink parts;
        ASSERT_TRUE(splitMailLink(parts, link));
        EXPECT_TRUE(hasAttachment(link));
        EXPECT_STREQ(text.Format(L"%s|%s|%s|%s", parts.recipient.text(), parts.subject.text(), parts.body.text(),
                                 parts.attachment.text()),
                     expected);
    }
}

TEST(Helpers, MailRecordsResultsAndBoxes)
{
    Calls calls;
    Boxes boxes;
    int window = 0;
    const auto send = [&](const std::wstring& to, const wchar_t* file, const std::wstring& library) {
        return sendMailThrough(library.c_str(), &window, to.c_str(), L"subject", nullptr, file);
    };
    const auto at = std::to_string(reinterpret_cast<std::uintptr_t>(&window));
    const std::pair<std::uint32_t, const char*> results[] = {{0, ""},
                                                             {1, ""},
                                                             {2, "E_FALURE"},
                                                             {3, "LOGON_FAILURE"},
                                                             {4, "DISK_FULL"},
                                                             {11, "ATTACHMENT_NOT_FOUND"},
                                                             {26, "number: 0x1A"}};
    const int handles = openHandles();
    for (const auto& [result, name] : results) {
        calls.answers["MAPISendMail"] = static_cast<std::intptr_t>(result);
        EXPECT_EQ(send(L"a@b.c", L"C:\\f", crafted()), result);
        Strings expected;
        for (const char* const flags : {"0", "9"})
            if (*flags == '0' || result == 3)
                expected.insert(expected.end(), {"SMTP:a@b.c(11)", "subject(0)", "(" + at + ")", "C:\\f(1)",
                                                 std::string("MAPISendMail(") + flags + ")"});
        const Strings all = calls.take();
        EXPECT_EQ(Strings(all.begin() + 1, all.end() - 1), expected); // between the library's start and end
        const std::string shown = std::string("E-mail cannot be send (error ") + name + ")";
        const Box box = {reinterpret_cast<std::uintptr_t>(&window), shown, "Send e-Mail", 0x1010};
        EXPECT_EQ(boxes.take(), *name ? std::vector<Box>{box} : std::vector<Box>{});
    }
    EXPECT_EQ(openHandles(), handles);
    calls.answers["MAPISendMail"] = 0;
    EXPECT_EQ(send(std::wstring(1018, L'a'), nullptr, crafted()), 0u);
    EXPECT_EQ(calls.take().at(4), "no file(0)");
    EXPECT_EQ(send(std::wstring(1019, L'a'), nullptr, crafted()), 25u);
    // What the code page lacks is refused where it would name another mailbox or file.
    ASSERT_NE(GetACP(), 65001u);
    EXPECT_EQ(send(L"\u0414@b.c", nullptr, crafted()), 25u);
    EXPECT_EQ(send(L"a@b.c", L"C:\\\u0414", crafted()), 11u);
    EXPECT_EQ(send(std::wstring(1019, L'a'), nullptr, L"no such library.dll"), 2u); // before the recipient is looked at
    EXPECT_EQ(send(L"a@b.c", nullptr, craftedWithout({"MAPISendMail"})), 2u);
    EXPECT_EQ(boxes.take().size(), 5u);

    // Under the default name, from a link: the stand-in lies where the program's own libraries are sought.
    const std::wstring standIn = programFolder() / L"mapi32.dll";
    ASSERT_TRUE(CopyFileW(crafted().c_str(), standIn.c_str(), FALSE));
    calls.take();
    EXPECT_EQ(OpenMailLink(nullptr, L"mailto:a@b.c?subject=x&attach=C:\\f"), 33);
    EXPECT_EQ(calls.take().at(1), "SMTP:a@b.c(11)");
    calls.answers["MAPISendMail"] = 1;
    EXPECT_EQ(OpenMailLink(nullptr, L"mailto:a@b.c&attach=C:\\f"), 1);
    DeleteFileW(standIn.c_str());
}

// What the witness program writes, within some seconds; the file is named in the environment until then.
struct Witness
{
    const std::wstring path = temporaryFile(L"witness");
    Witness() { SetEnvironmentVariableW(L"TOOLBELT_WITNESS", path.c_str()); }
    std::wstring waitForLine() const
    {
        std::string bytes;
        for (int tries = 0; tries < 300 && bytes.empty(); ++tries) {
            Sleep(50);
            bytes = readFile(path);
        }
        DeleteFileW(path.c_str());
        return {reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / 2};
    }
};

std::wstring started;

BOOL WINAPI noteProgram(const wchar_t* program, wchar_t*, SECURITY_ATTRIBUTES*, SECURITY_ATTRIBUTES*, BOOL, DWORD,
                        void*, const wchar_t*, STARTUPINFOW*, PROCESS_INFORMATION*)
{
    started = program;
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

TEST(Helpers, PowerShellAndTheShellStartPrograms)
{
    const std::wstring folder = programFolder() / L"beside";
    const int handles = openHandles();
    for (const std::wstring& text : {std::wstring(L"Get-Item 'ä'; exit 3"), std::wstring(6000, L'x')}) {
        Witness witness;
        EXPECT_EQ(runPowerShellFrom((L"Z:\\nowhere;" + folder).c_str(), text.c_str()), 0u);
        EXPECT_EQ(witness.waitForLine(), L"\"" + folder + L"\\powershell.exe\" -Command \"" + text + L"\"");
    }
    EXPECT_EQ(openHandles(), handles);
    EXPECT_EQ(runPowerShellFrom(L"Z:\\nowhere", L""), 2u);
    EXPECT_EQ(runPowerShellFrom(L"Z:\\nowhere", L"x"), 2u);
    EXPECT_EQ(runPowerShellFrom(folder.c_str(), L""), 0u);
    EXPECT_EQ(runPowerShellFrom(folder.c_str(), nullptr), 0u);
    wchar_t system[MAX_PATH];
    const std::wstring own(system, GetSystemDirectoryW(system, MAX_PATH));
    const std::wstring real = own + L"\\WindowsPowerShell\\v1.0\\powershell.exe";
    const bool isThere = GetFileAttributesW(real.c_str()) != INVALID_FILE_ATTRIBUTES;
    EXPECT_EQ(RunPowerShell(nullptr), isThere ? 0u : 2u);
    { // planted in the current folder and beside the program, where the system itself looks first
        const std::filesystem::path before = std::filesystem::current_path(),
                                    planted = programFolder() / L"powershell.exe";
        std::filesystem::current_path(folder);
        std::filesystem::copy_file("powershell.exe", planted, std::filesystem::copy_options::overwrite_existing);
        const Replaced noted(&createProcessSlot, noteProgram);
        EXPECT_EQ(runPowerShellFrom(L"Z:\\nowhere", L"x"), 2u);
        EXPECT_EQ(RunPowerShell(L"x"), isThere ? DWORD{ERROR_ACCESS_DENIED} : DWORD{ERROR_FILE_NOT_FOUND});
        EXPECT_EQ(started, isThere ? real : L"");
        std::filesystem::remove(planted);
        std::filesystem::current_path(before);
    }
    const std::wstring broken = temporaryFile(L"broken");
    CreateDirectoryW(broken.c_str(), nullptr);
    std::ofstream(std::filesystem::path(broken) / "powershell.exe").flush();
    EXPECT_EQ(runPowerShellFrom(broken.c_str(), L"x"), static_cast<std::uint32_t>(ERROR_BAD_EXE_FORMAT));
    std::filesystem::remove_all(std::filesystem::path(broken));

    Witness opened; // a link without a file is the shell's to open, whatever it names
    EXPECT_GT(OpenMailLink(nullptr, (folder + L"\\powershell.exe").c_str()), 32);
    EXPECT_NE(opened.waitForLine(), L"");
    EXPECT_LE(OpenMailLink(nullptr, L"Z:\\nowhere\\no such file.txt"), 32);
}

} // namespace
} // namespace toolbelt::test
