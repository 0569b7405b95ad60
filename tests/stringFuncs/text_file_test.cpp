// Mapped files and text files on a real file system.
#include <gtest/gtest.h>

#include "Includes/stringFuncs/text_file.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <winioctl.h>

#include "Includes/stringFuncs/file_view.h"
#include "tests/cli/process.h"
#include "tests/stringFuncs/text_support.h"

namespace toolbelt::test {
namespace {

using namespace std::literals;

constexpr std::uint32_t WINDOW = 1 << 16; // the allocation granularity
constexpr std::uint64_t GIB_4 = std::uint64_t(1) << 32;

// A file in a folder whose name is outside every code page.
class TextFile : public testing::Test
{
protected:
    HANDLE open(DWORD access, DWORD share, DWORD how = OPEN_EXISTING) const
    {
        return CreateFileW(path_.c_str(), access, share, nullptr, how, 0, nullptr);
    }
    // Puts the bytes at an offset of a new file, sparse in front of them.
    void write(std::string_view bytes, std::uint64_t offset = 0) const
    {
        const HANDLE file = open(GENERIC_WRITE, 0, CREATE_ALWAYS);
        DWORD done = 0;
        DeviceIoControl(file, FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &done, nullptr);
        LONG high = static_cast<LONG>(offset >> 32);
        SetFilePointer(file, static_cast<LONG>(offset), &high, FILE_BEGIN);
        ASSERT_TRUE(WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr));
        CloseHandle(file);
    }
    // The expected text, or with a code none.
    void expectLoad(const std::u16string& expected, std::int32_t code = 0) const
    {
        cWCStr text(L"as it was");
        EXPECT_EQ(LoadTextFile(text, path_.c_str()), code);
        EXPECT_EQ(units(text), code == 0 ? expected : u"as it was");
    }

    const Scratch scratch_;
    std::wstring path_ = scratch_.widePath("\xC3\xA4");
};

TEST_F(TextFile, LoadsWhatThereIsAndTellsWhatTheSystemSays)
{
    const std::u16string text(99999, u'x');
    write(std::string(99999, 'x'));
    expectLoad(text);
    const HANDLE shared = open(GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
    expectLoad(text); // in use, but not locked
    CloseHandle(shared);
    const HANDLE locked = open(GENERIC_READ, 0);
    expectLoad({}, ERROR_SHARING_VIOLATION);
    CloseHandle(locked);
    EXPECT_TRUE(DeleteFileW(path_.c_str())); // nothing was left open
    expectLoad({}, ERROR_FILE_NOT_FOUND);

    const std::wstring folder = path_ + std::wstring(200, L'p'), name = L"\\" + std::wstring(200, L'p');
    ASSERT_TRUE(CreateDirectoryW((L"\\\\?\\" + folder).c_str(), nullptr));
    path_ = L"\\\\?\\" + folder + name;
    write("far");
    path_ = folder + name; // the drive-letter form
    expectLoad(u"far");
    path_ = folder;
    expectLoad({}, ERROR_ACCESS_DENIED);
    EXPECT_TRUE(DeleteFileW((L"\\\\?\\" + folder + name).c_str()) && RemoveDirectoryW((L"\\\\?\\" + folder).c_str()));
}

TEST_F(TextFile, KnowsWhatIsTooLarge)
{
    write("x", GIB_4 - 1);
    expectLoad({}, -2);
    write("x", GIB_4 - 2); // below the limit, beyond the address space: the system refuses
    cFileView file;
    ASSERT_TRUE(file.Open(path_.c_str()));
    EXPECT_FALSE(file.Map(0) || file.Map(0xFFFFFFFF) || file.view());
    EXPECT_NE(file.lastError(), 0u);
    expectLoad({}, static_cast<std::int32_t>(file.lastError()));
    EXPECT_TRUE(file.Map(1)); // a smaller view will do

    file.Close();
    write("end", GIB_4); // views reach there
    ASSERT_TRUE(file.Open(path_.c_str()) && file.Map(1 << 27));
    while (file.MoveOn()) {
    }
    EXPECT_EQ(file.offset(), GIB_4);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(file.view()), file.viewSize()), "end");
}

TEST_F(TextFile, ViewsCoverTwoWindowsAndOverlapByOne)
{
    std::string bytes(3 * WINDOW + 100, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7 + i / WINDOW);
    write(bytes);
    cFileView file;
    ASSERT_TRUE(file.Open(path_.c_str()) && file.Map(1)); // rounded up
    for (const std::uint32_t window : {0, 1, 2, 3}) {
        EXPECT_EQ(file.offset(), window * WINDOW);
        EXPECT_TRUE(std::string_view(reinterpret_cast<const char*>(file.view()), file.viewSize()) ==
                    std::string_view(bytes).substr(window * WINDOW, 2 * WINDOW));
        EXPECT_EQ(file.MoveOn(), window < 3);
    }
    EXPECT_EQ(file.lastError(), std::uint32_t(ERROR_HANDLE_EOF));
    EXPECT_EQ(file.viewSize(), 100u); // past the end nothing moves

    ASSERT_TRUE(file.Open(file.path()) && file.Map(0)); // anew, the whole
    const std::uint8_t* const whole = file.view();
    EXPECT_EQ(file.viewSize(), bytes.size());
    EXPECT_TRUE(file.Map(0) && file.view() == whole && !file.MoveOn()); // kept
    EXPECT_TRUE(file.Map(WINDOW) && file.MoveOn() && file.Map(0));      // the rest from where the windows had come to
    EXPECT_EQ(file.viewSize(), bytes.size() - WINDOW);

    file.Close();
    write("");
    EXPECT_TRUE(file.Open(path_.c_str()) && !file.Map(0) && !file.Map(1));
    EXPECT_EQ(file.lastError(), std::uint32_t(ERROR_FILE_INVALID)); // as the system says of an empty file
}

} // namespace
} // namespace toolbelt::test
