// The DLL in a process that is not its own: libraries planted under the names that it binds late, loading and unloading
// many times, and callers whose stack is aligned to four bytes only.
#include <gtest/gtest.h>

#include <process.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "include/toolbelt/toolbelt_c.h"
#include "tests/robust/enter.h"
#include "tests/support/process_holdings.h"

namespace toolbelt::test {
namespace {

namespace fs = std::filesystem;

fs::path program()
{
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return path;
}
fs::path beside(const wchar_t* name)
{
    return program().parent_path() / name;
}
HMODULE loadDll()
{
    const HMODULE library = LoadLibraryW(beside(L"toolbelt.dll").c_str());
    EXPECT_NE(library, nullptr);
    return library;
}
std::string readFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// An exported operation by its name in exports.txt.
void* exported(HMODULE library, const char* name)
{
    void* const function = reinterpret_cast<void*>(GetProcAddress(library, name));
    if (!function) std::fprintf(stderr, "not exported: %s\n", name);
    return function;
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

// Bound late; whether the system's folder comes first in any case.
const std::pair<const wchar_t*, bool> BOUND[] = {{L"advapi32.dll", true}, {L"shell32.dll", true},
                                                 {L"user32.dll", true},   {L"version.dll", false},
                                                 {L"Msimg32.dll", false}, {L"mapi32.dll", false}};

// The program that finds them: "--late DLL HOW NAME". What loads them is said by the planted libraries themselves.
int bindLate(wchar_t** arguments)
{
    const std::wstring how = arguments[1], name = arguments[2];
    if (how == L"restricted") {
        using Restrict = BOOL(WINAPI*)(DWORD);
        void* const restrict = exported(GetModuleHandleW(L"kernel32.dll"), "SetDefaultDllDirectories");
        if (!restrict || !reinterpret_cast<Restrict>(restrict)(0x800)) return 3; // the system's folder alone
    }
    if (how == L"preloaded") {
        wchar_t system[MAX_PATH];
        GetSystemDirectoryW(system, MAX_PATH);
        if (!LoadLibraryW((fs::path(system) / name).c_str())) return 4;
    }
    const HMODULE library = LoadLibraryW(arguments[0]);
    if (!library) return 5;
    bindAll(library);
    // The mail interface would show its dialogs: its name as the library binds it.
    alignas(8) char object[1024] = {};
    enterAt(0, exported(library, "_ZN8toolbelt4CDllC1EPKwPKcii"), object, name.c_str(), nullptr, 0, 0);
    return 0;
}

TEST(Process, PlantedLibraries)
{
    const fs::path root = fs::temp_directory_path() / (L"planted" + std::to_wstring(GetCurrentProcessId())),
                   own = root / "program", current = root / "current", late = own / "late.exe", log = root / "log",
                   before = fs::current_path();
    for (const fs::path& folder : {own, current}) ASSERT_TRUE(fs::create_directories(folder));
    fs::copy_file(program(), late);
    SetEnvironmentVariableW(L"TOOLBELT_PLANTED", log.c_str());
    // What the first program of a session starts under Wine is started from here: it would keep a child's files open.
    const HMODULE library = loadDll();
    bindAll(library);
    GetDesktopWindow();
    FreeLibrary(library);
    fs::current_path(current);
    const std::wstring dll = L'"' + beside(L"toolbelt.dll").wstring() + L'"';
    int seen = 0;
    for (const auto& [name, systemsOwn] : BOUND) {
        for (const fs::path& folder : {own, current}) fs::copy_file(beside(L"planted.dll"), folder / name);
        for (const std::wstring how : {L"plain", L"preloaded", L"restricted"}) {
            if (how != L"plain" && systemsOwn) continue;
            fs::remove(log);
            const auto child = reinterpret_cast<HANDLE>(
                _wspawnl(_P_NOWAIT, late.c_str(), L"late", L"--late", dll.c_str(), how.c_str(), name, nullptr));
            ASSERT_NE(child, INVALID_HANDLE_VALUE);
            DWORD exitCode = ~0u;
            if (WaitForSingleObject(child, 30000) != WAIT_OBJECT_0) TerminateProcess(child, 1);
            EXPECT_TRUE(GetExitCodeProcess(child, &exitCode) && exitCode == 0) << "exit code " << exitCode;
            CloseHandle(child);
            const std::string output = readFile(log);
            const bool ownLoaded = output.find("\\program\\") != std::string::npos;
            const bool currentLoaded = output.find("\\current\\") != std::string::npos;
            std::printf("    %-14ls %-11ls %s's folder\n", name, how.c_str(),
                        ownLoaded       ? "the program"
                        : currentLoaded ? "the current"
                                        : "the system");
            EXPECT_TRUE(!currentLoaded && (!ownLoaded || how == L"plain")) << output;
            seen += ownLoaded;
        }
        for (const fs::path& folder : {own, current}) fs::remove(folder / name);
    }
    EXPECT_GE(seen, 2) << "the planted msimg32.dll and mapi32.dll do not tell";
    fs::current_path(before);
    for (int i = 0; i < 100 && !DeleteFileW(late.c_str()); ++i) Sleep(20); // the system may not have let go of it yet
    fs::remove_all(root);
}

// ---- loading and unloading

TEST(Process, ThousandLoadsAndUnloads)
{
    // What the DLL needs of the system stays, so that the counts are the DLL's own.
    for (const wchar_t* name :
         {L"wininet.dll", L"comctl32.dll", L"advapi32.dll", L"shell32.dll", L"version.dll", L"msimg32.dll"})
        ASSERT_TRUE(LoadLibraryW(name));
    const auto once = [](int i) {
        const HMODULE library = loadDll();
        bindAll(library, i % 10 == 0); // asking the service manager takes the most time
        std::uint8_t digest[64];
        std::uint32_t size = 64;
        EXPECT_EQ(enterAt(0, exported(library, "tb_digest"), nullptr, 10, "abc", 3, digest, &size), 0u);
        // The process-wide objects end here, under the loader's lock.
        ASSERT_TRUE(FreeLibrary(library));
        ASSERT_EQ(GetModuleHandleW(L"toolbelt.dll"), nullptr) << "it stays loaded";
    };
    for (int i = 0; i < 50; ++i) once(i);
    const Holdings before = holdings();
    void* const planted = HeapAlloc(GetProcessHeap(), 0, 100);
    EXPECT_GT(holdings().blocks, before.blocks) << "blocks are not counted";
    HeapFree(GetProcessHeap(), 0, planted);
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

// What the runtime keeps of a thread that was inside, as the library is no longer there when the thread ends.
TEST(Process, ThreadThatOutlivesTheLibraryKeepsTwoHandles)
{
    int before = 0, kept = 0;
    const HANDLE turn = CreateEventW(nullptr, FALSE, FALSE, nullptr),
                 done = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    for (int round = 0; round < 3; ++round) { // the first ones bring what the system keeps
        HMODULE library = nullptr;
        std::thread user([&] {
            SetEvent(done);
            WaitForSingleObject(turn, INFINITE); // loaded
            bindAll(library, false);
            SetEvent(done);
            WaitForSingleObject(turn, INFINITE); // unloaded
        });
        WaitForSingleObject(done, INFINITE);
        before = openHandles();
        library = loadDll();
        SetEvent(turn);
        WaitForSingleObject(done, INFINITE);
        EXPECT_TRUE(FreeLibrary(library));
        EXPECT_EQ(GetModuleHandleW(L"toolbelt.dll"), nullptr) << "it stays loaded";
        kept = openHandles();
        SetEvent(turn);
        user.join();
    }
    CloseHandle(turn);
    CloseHandle(done);
    EXPECT_EQ(kept - before, 2);
}

// ---- the stack

// Each operation at each alignment, on the fastest processor features, gives what it gives with the stack in order.
TEST(Process, StacksAtEachMultipleOfFour)
{
    const HMODULE library = loadDll();
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
        const auto note = [&](const std::string& name, std::uint32_t status) {
            EXPECT_EQ(status, 0u) << name;
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
        size = 256;
        note("tb_rsa_sign",
             run("tb_rsa_sign", nullptr, key.data(), length(key), 8, text.data(), length(text), out.data(), &size));
        const Result& signature = all["tb_rsa_sign"];
        note("tb_rsa_verify", run("tb_rsa_verify", nullptr, open.data(), length(open), 8, text.data(), length(text),
                                  signature.data(), 256));
        note("tb_certificate_check",
             run("tb_certificate_check", nullptr, text.data(), length(text), nullptr, 0, 1500000000, 0));
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
    EXPECT_GE(results[0].size(), 24u);
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
