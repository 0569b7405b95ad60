// The built file: what it imports and exports, how it may be loaded, and which version it says it is.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <set>
#include <string>
#include <vector>

namespace {

std::wstring dllPath()
{
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(GetModuleHandleW(L"toolbelt.dll"), path, MAX_PATH);
    return path;
}

// The file as it lies on disk; addresses of its headers are mapped to file offsets by the section table.
class PeFile
{
public:
    explicit PeFile(const std::wstring& path)
    {
        std::FILE* file = _wfopen(path.c_str(), L"rb");
        if (!file) return;
        char chunk[65536];
        for (std::size_t n; (n = std::fread(chunk, 1, sizeof chunk, file)) > 0;)
            bytes_.insert(bytes_.end(), chunk, chunk + n);
        std::fclose(file);
    }
    bool read() const { return bytes_.size() > 4096; }
    const IMAGE_NT_HEADERS32& headers() const
    {
        const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(bytes_.data());
        return *reinterpret_cast<const IMAGE_NT_HEADERS32*>(bytes_.data() + dos->e_lfanew);
    }
    const IMAGE_DATA_DIRECTORY& directory(int index) const { return headers().OptionalHeader.DataDirectory[index]; }
    template <typename T>
    const T* at(DWORD address) const
    {
        const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(&headers());
        for (int i = 0; i < headers().FileHeader.NumberOfSections; ++i, ++section)
            if (address >= section->VirtualAddress && address < section->VirtualAddress + section->SizeOfRawData)
                return reinterpret_cast<const T*>(bytes_.data() + section->PointerToRawData +
                                                  (address - section->VirtualAddress));
        return nullptr;
    }

private:
    std::vector<char> bytes_;
};

TEST(DllFile, IsA32BitLibraryThatMayBeLoadedAnywhereAndRunsWithoutExecutableData)
{
    const PeFile file(dllPath());
    ASSERT_TRUE(file.read());
    EXPECT_EQ(file.headers().Signature, DWORD{IMAGE_NT_SIGNATURE});
    EXPECT_EQ(file.headers().FileHeader.Machine, IMAGE_FILE_MACHINE_I386);
    EXPECT_TRUE(file.headers().FileHeader.Characteristics & IMAGE_FILE_DLL);
    EXPECT_FALSE(file.headers().FileHeader.Characteristics & IMAGE_FILE_RELOCS_STRIPPED);
    EXPECT_GT(file.directory(IMAGE_DIRECTORY_ENTRY_BASERELOC).Size, 0u);
    const WORD wanted = IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE | IMAGE_DLLCHARACTERISTICS_NX_COMPAT;
    EXPECT_EQ(file.headers().OptionalHeader.DllCharacteristics & wanted, wanted);
    // Old systems are customers too: nothing newer than Windows XP may be demanded by the header.
    EXPECT_LE(file.headers().OptionalHeader.MajorSubsystemVersion, 5);
}

TEST(DllFile, ImportsOnlySystemLibraries)
{
    const PeFile file(dllPath());
    ASSERT_TRUE(file.read());
    const std::set<std::string> system = {"kernel32.dll", "msvcrt.dll",  "user32.dll",  "gdi32.dll",
                                          "advapi32.dll", "shell32.dll", "wininet.dll", "comctl32.dll"};
    const auto* import = file.at<IMAGE_IMPORT_DESCRIPTOR>(file.directory(IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress);
    ASSERT_NE(import, nullptr);
    int count = 0;
    for (; import->Name != 0; ++import, ++count) {
        std::string name = file.at<char>(import->Name);
        std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
        EXPECT_TRUE(system.contains(name)) << name;
        // Nor functions that came after Windows XP, of which the runtime knows this one.
        for (const auto* thunk = file.at<DWORD>(import->FirstThunk); *thunk != 0; ++thunk) {
            if (*thunk & IMAGE_ORDINAL_FLAG32) continue;
            const CHAR* function = file.at<IMAGE_IMPORT_BY_NAME>(*thunk)->Name;
            EXPECT_STRNE(function, "GetTickCount64");
        }
    }
    EXPECT_GT(count, 0);
}

// The list in the tree is what was meant to be public. A name more or less is either a mistake or a decision: then the
// list is made anew, by tools/list_exports.sh.
TEST(DllFile, ExportsWhatTheListSays)
{
    const PeFile file(dllPath());
    ASSERT_TRUE(file.read());
    const auto* exports = file.at<IMAGE_EXPORT_DIRECTORY>(file.directory(IMAGE_DIRECTORY_ENTRY_EXPORT).VirtualAddress);
    ASSERT_NE(exports, nullptr);
    EXPECT_EQ(exports->NumberOfFunctions, exports->NumberOfNames);
    const auto* names = file.at<DWORD>(exports->AddressOfNames);
    std::set<std::string> unlisted;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i) unlisted.insert(file.at<char>(names[i]));

    std::ifstream list(TOOLBELT_EXPORTS);
    std::string line, before;
    int count = 0;
    for (; std::getline(list, line); before = line, ++count) {
        const std::string name = line.substr(0, line.find_first_of(" \r"));
        EXPECT_LT(before, line) << "not sorted";
        EXPECT_EQ(unlisted.erase(name), 1u) << "listed, and not exported: " << line;
        // Functions, constants and virtual tables of namespace toolbelt, by the compiler's mangling; and the C names.
        EXPECT_TRUE(name.find("N8toolbelt") != std::string::npos || name.find("NK8toolbelt") != std::string::npos ||
                    name.starts_with("tb_"))
            << name;
    }
    EXPECT_GT(count, 100);
    for (const std::string& name : unlisted) ADD_FAILURE() << "exported, and not listed: " << name;
}

TEST(DllFile, SaysItsVersion)
{
    const std::wstring path = dllPath();
    DWORD ignored = 0;
    std::vector<char> block(GetFileVersionInfoSizeW(path.c_str(), &ignored));
    ASSERT_FALSE(block.empty());
    ASSERT_TRUE(GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()));
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
