#include "tests/system/support.h"

#include <windows.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>

#include "Includes/system/message_box.h"

namespace toolbelt::test {
namespace {

std::mutex callsMutex;
std::vector<std::string> calls;
std::map<std::string, std::intptr_t> answers;
std::map<std::string, void (*)()> actions;
std::map<std::string, std::uint32_t> counts;
std::vector<Box> boxes;

struct CraftedCopies
{
    std::vector<std::wstring> paths;
    ~CraftedCopies()
    {
        for (const std::wstring& path : paths) DeleteFileW(path.c_str());
    }
} copies;

int __stdcall recordBox(void* window, const char* text, const char* title, unsigned int flags)
{
    boxes.push_back({reinterpret_cast<std::uintptr_t>(window), text, title, flags});
    return IDOK;
}

std::string readFile(const std::wstring& path)
{
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

extern "C" __declspec(dllexport) std::intptr_t craftedCalled(const char* what, std::uintptr_t argument)
{
    void (*action)() = nullptr;
    std::intptr_t answer = 1;
    {
        const std::lock_guard<std::mutex> guard(callsMutex);
        calls.push_back(std::string(what) + "(" + std::to_string(argument) + ")");
        ++counts[what];
        if (answers.contains(what)) answer = answers[what];
        if (actions.contains(what)) action = actions[what];
    }
    if (action) action();
    return answer;
}

std::wstring programFolder()
{
    wchar_t path[MAX_PATH];
    std::wstring text(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
    return text.substr(0, text.rfind(L'\\') + 1);
}

std::wstring temporaryFile(const std::wstring& name)
{
    wchar_t folder[MAX_PATH];
    const std::wstring text(folder, GetTempPathW(MAX_PATH, folder));
    return text + L"toolbelt-" + std::to_wstring(GetCurrentProcessId()) + L"-" + name;
}

std::wstring crafted()
{
    return programFolder() + L"crafted.dll";
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
    const std::wstring path = temporaryFile(L"crafted-" + std::to_wstring(copies.paths.size()) + L".dll");
    copies.paths.push_back(path);
    std::ofstream(std::filesystem::path(path), std::ios::binary) << bytes;
    return path;
}

Calls::Calls()
{
    const std::lock_guard<std::mutex> guard(callsMutex);
    calls.clear();
    answers.clear();
    actions.clear();
    counts.clear();
}

Calls::~Calls()
{
    const std::lock_guard<std::mutex> guard(callsMutex);
    actions.clear();
}

std::vector<std::string> Calls::take()
{
    const std::lock_guard<std::mutex> guard(callsMutex);
    return std::exchange(calls, {});
}

void Calls::answer(const std::string& name, std::intptr_t answer)
{
    answers[name] = answer;
}

void Calls::during(const std::string& name, void (*action)())
{
    actions[name] = action;
}

std::uint32_t Calls::count(const std::string& name) const
{
    const std::lock_guard<std::mutex> guard(callsMutex);
    return counts[name];
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

// Wine's own count is always 0.
int openHandles()
{
    int count = 0;
    for (std::uintptr_t value = 4; value < 0x4000; value += 4) {
        DWORD flags = 0;
        if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) ++count;
    }
    return count;
}

std::string outputOf(const std::wstring& program)
{
    FILE* const pipe = _wpopen((L"\"" + program + L"\"").c_str(), L"rb");
    std::string text;
    for (int byte; pipe && (byte = std::fgetc(pipe)) != EOF;) text += static_cast<char>(byte);
    EXPECT_EQ(pipe ? _pclose(pipe) : -1, 0);
    return text;
}

Witness::Witness() : path_(temporaryFile(L"witness"))
{
    DeleteFileW(path_.c_str());
    SetEnvironmentVariableW(L"TOOLBELT_WITNESS", path_.c_str());
}

std::wstring Witness::waitForLine()
{
    std::string bytes;
    for (int tries = 0; tries < 300 && bytes.empty(); ++tries) {
        Sleep(50);
        bytes = readFile(path_);
    }
    DeleteFileW(path_.c_str());
    std::wstring line(bytes.size() / 2, L'\0');
    std::memcpy(line.data(), bytes.data(), line.size() * 2);
    return line;
}

} // namespace toolbelt::test
