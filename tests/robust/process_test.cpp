// The DLL in a process that is not its own: libraries planted under the names that it binds late, loading and unloading
// many times, and callers whose stack is aligned to four bytes only.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "include/toolbelt/toolbelt_c.h"
#include "tests/robust/enter.h"
#include "tests/support/process_holdings.h"

namespace toolbelt::test {
namespace {

std::wstring programPath()
{
    wchar_t path[MAX_PATH];
    return std::wstring(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
}
std::wstring folderOf(const std::wstring& path)
{
    return path.substr(0, path.rfind(L'\\') + 1);
}
std::string readFile(const std::string& name)
{
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
std::wstring dllPath()
{
    return folderOf(programPath()) + L"toolbelt.dll";
}

// An exported operation by its name in exports.txt.
void* exported(HMODULE library, const char* name)
{
    void* const function = reinterpret_cast<void*>(GetProcAddress(library, name));
    if (!function) std::fprintf(stderr, "not exported: %s\n", name);
    return function;
}
template <typename Result, typename... Arguments>
Result call(HMODULE library, const char* name, Arguments... arguments)
{
    return reinterpret_cast<Result(__cdecl*)(Arguments...)>(exported(library, name))(arguments...);
}

// Uses all that is bound late, and with that builds the process-wide objects; the stack is so far out of order.
void bindAll(HMODULE library, bool services = true, std::uint32_t off = 0)
{
    const auto use = [&](const char* name, auto... arguments) {
        return enterAt(off, exported(library, name), arguments...);
    };
    const auto advapi = use("_ZN8toolbelt10CAdvAPIDll9getStaticEv", nullptr);
    if (services) use("_ZN8toolbelt10CAdvAPIDll4bindEPKw", reinterpret_cast<void*>(advapi), L"advapi32.dll");
    use("_ZN8toolbelt11cShell32Dll9getStaticEv", nullptr);
    const std::vector<char> version(4096); // no version resource
    const wchar_t* text = nullptr;
    std::uint32_t length = 0;
    use("_ZN8toolbelt16QueryFileVersionEPKvPPKwPjj", nullptr, version.data(), &text, &length, 9u);
    const HDC device = CreateCompatibleDC(nullptr);
    const RECT rectangle = {0, 0, 4, 4};
    use("_ZN8toolbelt8GradientEmRK7tagRECTP5HDC__m", nullptr, 1ul, &rectangle, device, 2ul);
    DeleteDC(device);
    use("_ZN8toolbelt17SystemDescriptionEv", nullptr);
    std::uint32_t fonts[8] = {};
    use("_ZN8toolbelt11sharedFontsEv", nullptr, fonts); // returned through memory, or not
}

// ---- planted libraries

constexpr const wchar_t* BOUND[] = {L"advapi32.dll", L"shell32.dll", L"version.dll",
                                    L"Msimg32.dll",  L"mapi32.dll",  L"user32.dll"};
// Those that are loaded from the system's folder in any case.
const std::wstring SYSTEMS_OWN[] = {L"advapi32.dll", L"shell32.dll", L"user32.dll"};
const std::wstring BOUND_HOW = L"plain";

// The program that finds them: "--late DLL HOW NAME". What loads them is said by the planted libraries themselves.
int bindLate(wchar_t** arguments)
{
    const std::wstring how = arguments[1], name = arguments[2];
    if (how == L"restricted") {
        using Restrict = BOOL(WINAPI*)(DWORD);
        void* const restrict =
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetDefaultDllDirectories"));
        if (!restrict || !reinterpret_cast<Restrict>(restrict)(0x800)) return 3; // the system's folder alone
    }
    if (how == L"loaded before") {
        wchar_t system[MAX_PATH];
        GetSystemDirectoryW(system, MAX_PATH);
        if (!LoadLibraryW((std::wstring(system) + L"\\" + name).c_str())) return 4;
    }
    const HMODULE library = LoadLibraryW(arguments[0]);
    if (!library) return 5;
    bindAll(library);
    // The mail interface would show its dialogs: its name as the library binds it.
    alignas(8) char object[1024] = {};
    enterAt(0, exported(library, "_ZN8toolbelt4CDllC1EPKwPKcii"), object, name.c_str(), nullptr, 0, 0);
    return 0;
}

struct Ran
{
    DWORD exitCode = ~0u;
    std::string output;
};
Ran runLate(const std::wstring& program, const std::wstring& folder, const std::wstring& how, const std::wstring& name)
{
    Ran ran;
    const std::wstring log = folder + L"log";
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    const HANDLE out = CreateFileW(log.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                   &inherited, CREATE_ALWAYS, 0, nullptr);
    EXPECT_NE(out, INVALID_HANDLE_VALUE);
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = start.hStdError = out;
    std::wstring line = L"\"" + program + L"\" --late \"" + dllPath() + L"\" \"" + how + L"\" " + name;
    PROCESS_INFORMATION process = {};
    if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, folder.c_str(), &start,
                       &process)) {
        if (WaitForSingleObject(process.hProcess, 30000) == WAIT_OBJECT_0)
            GetExitCodeProcess(process.hProcess, &ran.exitCode);
        else
            TerminateProcess(process.hProcess, 1);
        CloseHandle(process.hProcess);
        CloseHandle(process.hThread);
    }
    CloseHandle(out);
    ran.output = readFile(std::string(log.begin(), log.end()));
    DeleteFileW(log.c_str());
    return ran;
}

TEST(Process, PlantedLibraries)
{
    wchar_t temporary[MAX_PATH];
    GetTempPathW(MAX_PATH, temporary);
    const std::wstring root = temporary + std::wstring(L"planted") + std::to_wstring(GetCurrentProcessId()) + L"\\",
                       own = root + L"program\\", current = root + L"current\\", late = own + L"late.exe",
                       planted = folderOf(programPath()) + L"planted.dll";
    for (const std::wstring& folder : {root, own, current}) ASSERT_TRUE(CreateDirectoryW(folder.c_str(), nullptr));
    ASSERT_TRUE(CopyFileW(programPath().c_str(), late.c_str(), TRUE));
    // What the first program of a session starts under Wine is started from here: it would keep a child's files open.
    const HMODULE library = LoadLibraryW(dllPath().c_str());
    bindAll(library);
    GetDesktopWindow();
    FreeLibrary(library);
    int seen = 0;
    for (const std::wstring name : BOUND) {
        for (const std::wstring& folder : {own, current})
            ASSERT_TRUE(CopyFileW(planted.c_str(), (folder + name).c_str(), TRUE));
        for (const wchar_t* how : {L"plain", L"loaded before", L"restricted"}) {
            if (how != BOUND_HOW && std::count(std::begin(SYSTEMS_OWN), std::end(SYSTEMS_OWN), name)) continue;
            const Ran ran = runLate(late, current, how, name);
            const bool ownLoaded = ran.output.find("\\program\\") != std::string::npos;
            const bool currentLoaded = ran.output.find("\\current\\") != std::string::npos;
            std::printf("    %-14ls %-14ls %s's folder\n", name.c_str(), how,
                        ownLoaded       ? "the program"
                        : currentLoaded ? "the current"
                                        : "the system");
            EXPECT_EQ(ran.exitCode, 0u) << how;
            EXPECT_TRUE(!currentLoaded && (!ownLoaded || how == BOUND_HOW)) << ran.output;
            seen += ownLoaded;
        }
        for (const std::wstring& folder : {own, current}) DeleteFileW((folder + name).c_str());
    }
    EXPECT_GE(seen, 2) << "the planted msimg32.dll and mapi32.dll do not tell";
    for (int i = 0; i < 100 && !DeleteFileW(late.c_str()); ++i) Sleep(20); // the system may not have let go of it yet
    for (const std::wstring& folder : {current, own, root}) EXPECT_TRUE(RemoveDirectoryW(folder.c_str()));
}

// ---- loading and unloading

TEST(Process, ThousandLoadsAndUnloads)
{
    // What the DLL needs of the system stays, so that the counts are the DLL's own.
    for (const wchar_t* name :
         {L"wininet.dll", L"comctl32.dll", L"advapi32.dll", L"shell32.dll", L"version.dll", L"msimg32.dll"})
        ASSERT_TRUE(LoadLibraryW(name));
    const auto once = [](int i) {
        const HMODULE library = LoadLibraryW(dllPath().c_str());
        ASSERT_NE(library, nullptr);
        bindAll(library, i % 10 == 0); // asking the service manager takes the most time
        std::uint8_t digest[64];
        std::uint32_t size = 64;
        EXPECT_EQ((call<tb_status>(library, "tb_digest", 10, "abc", 3u, digest, &size)), TB_OK);
        // The process-wide objects end here, under the loader's lock.
        ASSERT_TRUE(FreeLibrary(library));
        ASSERT_EQ(GetModuleHandleW(L"toolbelt.dll"), nullptr) << "it stays loaded";
    };
    for (int i = 0; i < 50; ++i) once(i);
    const Holdings before = holdings();
    for (int i = 0; i < 950; ++i) once(i);
    const Holdings after = holdings();
    std::printf("    handles %d, then %d; blocks %d, then %d; KiB %u, then %u\n", before.handles, after.handles,
                before.blocks, after.blocks, static_cast<unsigned>(before.bytes / 1024),
                static_cast<unsigned>(after.bytes / 1024));
    EXPECT_LE(after.handles, before.handles);
    EXPECT_LE(after.drawing, before.drawing);
    EXPECT_LE(after.blocks, before.blocks + 50);
    EXPECT_LE(after.bytes, before.bytes + (512 << 10));
}

// ---- the stack

// Each operation at each alignment, on the fastest processor features, gives what it gives with the stack in order.
TEST(Process, StacksAtEachMultipleOfFour)
{
    const HMODULE library = LoadLibraryW(dllPath().c_str());
    ASSERT_NE(library, nullptr);
    using Result = std::vector<std::uint32_t>;
    std::map<std::string, Result> results[4];
    const auto text = readFile(TOOLBELT_VECTORS "certificates/real-godaddy-class2.pem"),
               key = readFile(TOOLBELT_VECTORS "keys/rsa2048.private.pem"),
               open = readFile(TOOLBELT_VECTORS "keys/rsa2048.pub.pem");
    const auto length = [](const auto& bytes) { return static_cast<std::uint32_t>(bytes.size()); };
    for (std::uint32_t off = 0; off < 16; off += 4) {
        auto& all = results[off / 4];
        std::vector<std::uint32_t> out(4096);
        std::uint32_t size = 0;
        const auto run = [&](const char* name, const void* self, auto... arguments) {
            return enterAt(off, exported(library, name), self, arguments...);
        };
        const auto note = [&](const std::string& name, std::uint32_t status, std::uint32_t expected = 0) {
            EXPECT_EQ(status, expected) << name;
            out.push_back(status);
            all[name] = std::exchange(out, Result(4096));
            size = 4096;
        };
        size = 4096;
        for (const int id : {1, 2, 3, 8, 10, 0x81, 0x82, 0x83})
            note("tb_digest " + std::to_string(id),
                 run("tb_digest", nullptr, id, text.data(), length(text), out.data(), &size));
        for (const int mode : {TB_CBC, TB_CBC_WORDSWAP, TB_CFB})
            for (const auto& [id, keyLength] : {std::pair{4, 16}, {7, 16}, {9, 32}, {11, 16}, {2, 24}}) {
                tb_cipher* cipher = nullptr;
                ASSERT_EQ(run("tb_cipher_open", nullptr, id, mode, text.data(), keyLength, &cipher), 0u) << id;
                const std::uint32_t encrypted =
                    run("tb_cipher_encrypt", nullptr, cipher, nullptr, text.data(), out.data(), 1024);
                note("tb_cipher " + std::to_string(id) + " " + std::to_string(mode),
                     encrypted +
                         run("tb_cipher_decrypt", nullptr, cipher, nullptr, out.data(), out.data() + 256, 1024));
                run("tb_cipher_close", nullptr, cipher);
            }
        note("base64Encode", run("_ZN8toolbelt12base64EncodeEPcPjPKhjPKcS5_S5_S5_j", nullptr, out.data(), &size,
                                 key.data(), 1000, nullptr, nullptr, nullptr, nullptr, 0));
        note("base64Decode", run("_ZN8toolbelt12base64DecodeEPhPjPKcjS3_S1_", nullptr, out.data(), &size,
                                 text.data() + 28, length(text) - 28 - 26, nullptr, nullptr));
        size = 256;
        const std::uint32_t made =
            run("tb_rsa_sign", nullptr, key.data(), length(key), 8, text.data(), length(text), out.data(), &size);
        EXPECT_EQ(made, 0u);
        const std::uint32_t verified =
            run("tb_rsa_verify", nullptr, open.data(), length(open), 8, text.data(), length(text), out.data(), size);
        EXPECT_EQ(verified, 0u);
        note("tb_rsa", made + verified);
        note("tb_certificate_check",
             run("tb_certificate_check", nullptr, text.data(), length(text), nullptr, 0, 1500000000, 0));
        // Through a virtual table: update and final of a digest object.
        void** hash = nullptr;
        ASSERT_EQ(run("_ZN8toolbelt10createHashEPPNS_8cHashAlgEi", nullptr, &hash, 8), 0u);
        void** const table = static_cast<void**>(*hash);
        enterAt(off, table[1], hash, text.data(), length(text));
        note("cHashAlg", enterAt(off, table[2], hash, out.data()));
        run("_ZN8toolbelt11destroyHashEPNS_8cHashAlgE", nullptr, hash);
        // The parser calls back for its memory.
        const std::string document = "{\"a\":[1.5,2e300,\"text\"]}";
        char error[128] = "";
        void* const tree = reinterpret_cast<void*>(
            run("_ZN8toolbelt9jsonParseEPKcjPA128_c", nullptr, document.data(), length(document), &error));
        EXPECT_NE(tree, nullptr) << error;
        run("_ZN8toolbelt8jsonFreeEPNS_9JsonValueE", nullptr, tree);
        // Key generation, on threads of its own.
        std::vector<std::uint8_t> seed(32, 0xC5);
        seed[16] = 0xD3;
        void* generated = nullptr;
        note("generateRsa", run("_ZN8toolbelt11generateRsaEPPNS_13RsaPrivateKeyEPhjjPNS_12ProgressSinkEb", nullptr,
                                &generated, seed.data(), 32, 0, nullptr, 0));
        run("_ZN8toolbelt10freeRsaKeyEPNS_13RsaPrivateKeyE", nullptr, generated);
        bindAll(library, true, off);
    }
    EXPECT_GE(results[0].size(), 27u);
    for (int i = 1; i < 4; ++i)
        for (const auto& [name, result] : results[0])
            EXPECT_EQ(results[i][name], result) << name << " off by " << 4 * i;
    EXPECT_NE(results[0]["tb_digest 8"], results[0]["tb_digest 10"]);
    FreeLibrary(library);
}

} // namespace
} // namespace toolbelt::test

int wmain(int count, wchar_t** arguments)
{
    if (count == 5 && std::wstring(arguments[1]) == L"--late") return toolbelt::test::bindLate(arguments + 2);
    testing::InitGoogleTest(&count, arguments);
    return RUN_ALL_TESTS();
}
