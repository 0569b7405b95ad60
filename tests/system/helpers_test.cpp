// The platform helpers.
#include <windows.h>

#include <cstring>
#include <filesystem>

#include "Includes/system/dll.h"
#include "Includes/system/file_version.h"
#include "Includes/system/mail_link.h"
#include "Includes/system/mapi_mail.h"
#include "Includes/system/percent_encode.h"
#include "Includes/system/powershell.h"
#include "Includes/system/system_description.h"
#include "Includes/system/wow64.h"
#include "tests/support/test_heap.h"
#include "tests/system/support.h"

namespace toolbelt::test {
namespace {

using Strings = std::vector<std::string>;

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
    calls.answer("IsWow64Process", 5);
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

// One node of a version resource: sizes, key, value and children, each aligned to 4 bytes.
std::string node(const std::wstring& key, bool isText, const std::string& value, const Strings& children = {})
{
    const auto pad = [](std::string& bytes) { bytes.resize((bytes.size() + 3) & ~std::size_t(3)); };
    std::string bytes(6, '\0');
    bytes.append(reinterpret_cast<const char*>(key.c_str()), (key.size() + 1) * 2);
    pad(bytes);
    bytes += value;
    for (const std::string& child : children) {
        pad(bytes);
        bytes += child;
    }
    const std::uint16_t header[3] = {static_cast<std::uint16_t>(bytes.size()),
                                     static_cast<std::uint16_t>(isText ? value.size() / 2 : value.size()), isText};
    std::memcpy(bytes.data(), header, sizeof(header));
    return bytes;
}

TEST(Helpers, FileVersionOfTheFirstTranslationThatHasOne)
{
    const auto text = [](const std::wstring& wide) {
        return std::string(reinterpret_cast<const char*>(wide.c_str()), (wide.size() + 1) * 2);
    };
    const auto table = [&](const wchar_t* key, const wchar_t* name, const std::string& value) {
        return node(key, true, "", {node(name, true, value)});
    };
    const std::string strings =
        node(L"StringFileInfo", true, "",
             {table(L"040704b0", L"Comments", text(L"none")), table(L"04090000", L"FileVersion", ""),
              table(L"040c04e4", L"FileVersion", text(L"1.2.3")), table(L"041004b0", L"FileVersion", text(L"later"))});
    const std::string translations("\x07\x04\xb0\x04\x09\x04\0\0\x0c\x04\xe4\x04\x10\x04\xb0\x04", 16);
    const std::string fixed(sizeof(VS_FIXEDFILEINFO), '\0');
    const auto block = [&](const Strings& parts) {
        return node(L"VS_VERSION_INFO", false, fixed, parts) + std::string(4096, '\0');
    };
    const std::string whole =
        block({strings, node(L"VarFileInfo", true, "", {node(L"Translation", false, translations)})});
    const wchar_t* value = L"before";
    std::uint32_t length = 99;
    EXPECT_TRUE(QueryFileVersion(whole.data(), &value, &length, 6));
    EXPECT_STREQ(value, L"1.2.3");
    EXPECT_EQ(length, 6u);
    EXPECT_FALSE(QueryFileVersion(whole.data(), &value, &length, 5)); // too long by its terminator
    const std::string first =
        block({strings, node(L"VarFileInfo", true, "", {node(L"Translation", false, translations.substr(0, 8))})});
    for (const std::string& without : {first, block({strings})}) {
        value = L"before";
        length = 99;
        EXPECT_FALSE(QueryFileVersion(without.data(), &value, &length, 100));
        EXPECT_EQ(value, nullptr);
        EXPECT_EQ(length, 0u);
    }
}

TEST(Helpers, PercentEncodingAndMailLinks)
{
    cWCS text;
    text.Assign(L">");
    EXPECT_TRUE(PercentEncode(L"a b-c%d\u0414Zz09_~/", text));
    EXPECT_STREQ(text.text(), L">a%20b-c%d%14Zz09%5F%7E%2F");
    EXPECT_TRUE(PercentEncode(nullptr, text));
    const struct
    {
        const wchar_t *encoded, *decoded;
    } escapes[] = {{L"a%20b+%", L"a b+%"},           {L"%4", L"%4"},
                   {L"%4g%zz", L"%4g%zz"},           {L"%D0%94%e4%C3", L"\u0414\u00E4\u00C3"},
                   {L"%F0%9F%98%80", L"\U0001F600"}, {L"%C3%zz%E2%82", L"\u00C3%zz\u00E2\u0082"}};
    for (const auto& each : escapes) {
        text.Assign(each.encoded);
        percentDecode(text);
        EXPECT_STREQ(text.text(), each.decoded);
        EXPECT_EQ(static_cast<std::size_t>(text.length()), std::wcslen(each.decoded));
    }

    const struct
    {
        const wchar_t *link, *recipient, *subject, *body, *attachment;
    } links[] = {{L"mailto:a@b.c?subject=x%20y&body=l1%0D%0Al2&attach=C:\\a b&c.txt", L"a@b.c", L"x y", L"l1\r\nl2",
                  L"C:\\a b&c.txt"},
                 {L"mailto:r&d@b.c?body=no&attach=%41", L"r&d@b.c", L"", L"", L"%41"},
                 {L"mailto:a@b.c&attach=f", L"a@b.c", L"", L"", L"f"},
                 {L"&attach=", L"", L"", L"", L""}};
    for (const auto& each : links) {
        MailLink parts;
        ASSERT_TRUE(splitMailLink(parts, each.link));
        EXPECT_TRUE(hasAttachment(each.link));
        EXPECT_STREQ(parts.recipient.text(), each.recipient);
        EXPECT_STREQ(parts.subject.text(), each.subject);
        EXPECT_STREQ(parts.body.text(), each.body);
        EXPECT_STREQ(parts.attachment.text(), each.attachment);
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
    const struct
    {
        std::uint32_t result;
        const char* name;
    } results[] = {{0, nullptr},         {1, nullptr},     {2, "E_FALURE"},
                   {3, "LOGON_FAILURE"}, {4, "DISK_FULL"}, {11, "ATTACHMENT_NOT_FOUND"},
                   {26, "number: 0x1A"}};
    for (const auto& each : results) {
        calls.answer("MAPISendMail", static_cast<std::intptr_t>(each.result));
        EXPECT_EQ(send(L"a@b.c", L"C:\\f", crafted()), each.result);
        Strings expected = {"SMTP:a@b.c(11)", "subject(0)", "(" + at + ")", "C:\\f(1)", "MAPISendMail(0)"};
        if (each.result == 3) {
            const Strings again = expected;
            expected.insert(expected.end(), again.begin(), again.end());
            expected.back() = "MAPISendMail(9)";
        }
        const Strings all = calls.take();
        EXPECT_EQ(Strings(all.begin() + 1, all.end() - 1), expected); // between the library's start and end
        std::vector<Box> shown;
        if (each.name)
            shown = {{reinterpret_cast<std::uintptr_t>(&window),
                      std::string("E-mail cannot be send (error ") + each.name + ")", "Send e-Mail", 0x1010}};
        EXPECT_EQ(boxes.take(), shown);
    }
    calls.answer("MAPISendMail", 0);
    EXPECT_EQ(send(std::wstring(1018, L'a'), nullptr, crafted()), 0u);
    EXPECT_EQ(calls.take().at(4), "no file(0)");
    EXPECT_EQ(send(std::wstring(1019, L'a'), nullptr, crafted()), 25u);
    EXPECT_EQ(send(L"a@b.c", nullptr, L"no such library.dll"), 2u);
    EXPECT_EQ(send(L"a@b.c", nullptr, craftedWithout({"MAPISendMail"})), 2u);
    EXPECT_EQ(boxes.take().size(), 3u);
}

TEST(Helpers, PowerShellAndTheShellStartPrograms)
{
    const std::wstring folder = programFolder() + L"beside";
    cWCS line;
    const std::wstring command(6000, L'x'); // longer than the formatter's working size
    EXPECT_EQ(formatPowerShellLine(line, L"P", command.c_str()), L"\"P\" -Command \"" + command + L"\"");
    EXPECT_EQ(runPowerShellFrom(L"Z:\\nowhere", L""), 2u);
    EXPECT_EQ(runPowerShellFrom(L"Z:\\nowhere", L"x"), 2u);
    EXPECT_EQ(runPowerShellFrom(folder.c_str(), L""), 0u);
    EXPECT_EQ(runPowerShellFrom(folder.c_str(), nullptr), 0u);
    wchar_t system[MAX_PATH];
    const std::wstring own(system, GetSystemDirectoryW(system, MAX_PATH));
    const DWORD there = GetFileAttributesW((own + L"\\WindowsPowerShell\\v1.0\\powershell.exe").c_str());
    EXPECT_EQ(RunPowerShell(nullptr), there == INVALID_FILE_ATTRIBUTES ? 2u : 0u);
    Witness command1;
    EXPECT_EQ(runPowerShellFrom((L"Z:\\nowhere;" + folder).c_str(), L"Get-Item 'ä'; exit 3"), 0u);
    EXPECT_EQ(command1.waitForLine(), L"\"" + folder + L"\\powershell.exe\" -Command \"Get-Item 'ä'; exit 3\"");
    const std::wstring broken = temporaryFile(L"broken");
    CreateDirectoryW(broken.c_str(), nullptr);
    CloseHandle(
        CreateFileW((broken + L"\\powershell.exe").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    EXPECT_EQ(runPowerShellFrom(broken.c_str(), L"x"), static_cast<std::uint32_t>(ERROR_BAD_EXE_FORMAT));
    std::filesystem::remove_all(std::filesystem::path(broken));

    Witness opened; // a link without a file is the shell's to open, whatever it names
    EXPECT_GT(OpenMailLink(nullptr, (folder + L"\\powershell.exe").c_str()), 32);
    EXPECT_NE(opened.waitForLine(), L"");
    EXPECT_LE(OpenMailLink(nullptr, L"Z:\\nowhere\\no such file.txt"), 32);
}

TEST(Helpers, FailedAllocationsAreStatuses)
{
    Calls calls;
    Boxes boxes;
    calls.answer("MAPISendMail", 0);
    const std::uint32_t injected = forEachFailingAllocation([&](TestHeap& heap) {
        const std::uint32_t sent = sendMailThrough(crafted().c_str(), nullptr, L"a@b.c", L"s", L"b", L"f");
        EXPECT_TRUE(sent == (heap.failed() ? MAIL_NO_MEMORY : MAIL_SENT)) << sent;
        boxes.take();
    });
    EXPECT_GE(injected, 5u);
    EXPECT_GE(forEachFailingAllocation([](TestHeap& heap) {
                  MailLink parts;
                  const bool split = splitMailLink(parts, L"mailto:a?subject=b&body=c&attach=d");
                  EXPECT_EQ(split, !heap.failed());
              }),
              4u);
    EXPECT_GE(forEachFailingAllocation([](TestHeap& heap) {
                  cWCS line;
                  const bool formatted = formatPowerShellLine(line, L"a", L"b") != nullptr;
                  EXPECT_EQ(formatted, !heap.failed());
              }),
              1u);
}

} // namespace
} // namespace toolbelt::test
