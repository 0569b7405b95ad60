#include "tests/system/support.h"

#include <windows.h>

#include <algorithm>
#include <fstream>
#include <mutex>

#include "Includes/system/message_box.h"

namespace toolbelt::test {
namespace {

Calls* current;
std::vector<Box> boxes;

std::vector<std::wstring> copies;

int __stdcall recordBox(void* window, const char* text, const char* title, unsigned int flags)
{
    boxes.push_back({reinterpret_cast<std::uintptr_t>(window), text, title, flags});
    return IDOK;
}

} // namespace

extern "C" __declspec(dllexport) std::intptr_t craftedCalled(const char* what, std::uintptr_t argument)
{
    static std::recursive_mutex mutex;
    if (!current) return 1;
    const std::lock_guard<std::recursive_mutex> guard(mutex);
    current->seen.push_back(std::string(what) + "(" + std::to_string(argument) + ")");
    if (current->actions.contains(what)) current->actions.at(what)();
    return current->answers.contains(what) ? current->answers.at(what) : 1;
}

std::wstring temporaryFile(const std::wstring& name)
{
    return std::filesystem::temp_directory_path() /
           (L"toolbelt-" + std::to_wstring(GetCurrentProcessId()) + L"-" + name);
}

std::wstring crafted()
{
    return programFolder() / L"crafted.dll";
}

// A name is hidden by raising its last letter by one, which leaves the sorted table of names sorted.
std::wstring craftedWithout(std::initializer_list<std::string> names)
{
    std::string bytes = readFile(crafted());
    for (const std::string& name : names) {
        const std::string stored = std::string(1, '\0') + name + '\0';
        std::size_t at = bytes.find(stored);
        EXPECT_NE(at, std::string::npos) << name;
        for (; at != std::string::npos; at = bytes.find(stored, at + 1)) ++bytes[at + name.size()];
    }
    copies.push_back(temporaryFile(L"crafted-" + std::to_wstring(copies.size()) + L".dll"));
    std::ofstream(std::filesystem::path(copies.back()), std::ios::binary) << bytes;
    return copies.back();
}

Calls::Calls()
{
    current = this;
}

Calls::~Calls()
{
    current = nullptr;
    for (const std::wstring& path : std::exchange(copies, {})) EXPECT_TRUE(DeleteFileW(path.c_str()));
}

std::uint32_t Calls::count(const std::string& name) const
{
    return std::count_if(seen.begin(), seen.end(),
                         [&](const std::string& call) { return call.starts_with(name + "("); });
}

Boxes::Boxes()
{
    boxes.clear();
    setMessageBoxFunction(recordBox);
}

Boxes::~Boxes()
{
    EXPECT_TRUE(boxes.empty()) << boxes.front().text;
    setMessageBoxFunction(nullptr);
}

std::vector<Box> Boxes::take()
{
    return std::exchange(boxes, {});
}

} // namespace toolbelt::test
