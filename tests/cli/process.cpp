#include "tests/cli/process.h"

#include <windows.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace toolbelt::test {
namespace {

std::wstring wide(const std::string& utf8)
{
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end())).wstring();
}

std::string narrow(const std::filesystem::path& path)
{
    const std::u8string utf8 = path.u8string();
    return {utf8.begin(), utf8.end()};
}

// None of the arguments holds a quotation mark or ends with a backslash.
std::wstring quoted(const std::wstring& argument)
{
    return L'"' + argument + L'"';
}

SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};

// What the program writes, in a file that is gone with its last handle. A pipe would stay open longer than the program:
// what the system starts on its behalf inherits it.
struct Written
{
    HANDLE file;
    Written()
    {
        wchar_t folder[MAX_PATH], path[MAX_PATH];
        GetTempPathW(MAX_PATH, folder);
        GetTempFileNameW(folder, L"out", 0, path);
        file = CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                           &inheritable, CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        if (file == INVALID_HANDLE_VALUE) throw std::runtime_error("no file for what is written");
    }
    ~Written() { CloseHandle(file); }
    std::string text() const
    {
        std::string bytes(GetFileSize(file, nullptr), 0);
        DWORD got = 0;
        SetFilePointer(file, 0, nullptr, FILE_BEGIN);
        ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &got, nullptr);
        return bytes;
    }
};

} // namespace

Outcome run(const Arguments& arguments, const std::string& input)
{
    static const std::wstring vectors = wide(TOOLBELT_VECTORS);
    std::wstring command = quoted(programFolder() / L"toolbelt.exe");
    for (const std::string& argument : arguments) command += L" " + quoted(wide(argument));

    const Written out, err;
    HANDLE reading = nullptr, writing = nullptr;
    if (!CreatePipe(&reading, &writing, &inheritable, 0)) throw std::runtime_error("no pipe");
    SetHandleInformation(writing, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = reading;
    startup.hStdOutput = out.file;
    startup.hStdError = err.file;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, vectors.c_str(), &startup,
                        &process))
        throw std::runtime_error("toolbelt.exe does not start");
    CloseHandle(reading);
    DWORD written = 0, exitCode = 0;
    for (std::size_t at = 0; at < input.size(); at += written)
        if (!WriteFile(writing, input.data() + at, static_cast<DWORD>(input.size() - at), &written, nullptr)) break;
    CloseHandle(writing);
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &exitCode);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return {static_cast<int>(exitCode), out.text(), err.text()};
}

std::filesystem::path programFolder()
{
    wchar_t path[MAX_PATH];
    return std::filesystem::path(path, path + GetModuleFileNameW(nullptr, path, MAX_PATH)).parent_path();
}

std::string readFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

Arguments operator+(Arguments first, const Arguments& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Scratch::Scratch()
    : folder_(std::filesystem::temp_directory_path() /
              (L"toolbelt \x041F\x0440\x043E\x0431\x0430 \x6F22\x5B57 " + std::to_wstring(GetCurrentProcessId())))
{
    std::filesystem::create_directory(folder_);
}

Scratch::~Scratch()
{
    std::filesystem::remove_all(folder_);
}

std::wstring Scratch::widePath(const std::string& name) const
{
    return folder_ / wide(name);
}

std::string Scratch::path(const std::string& name) const
{
    return narrow(widePath(name));
}

std::string Scratch::write(const std::string& name, const std::string& bytes) const
{
    std::ofstream file(folder_ / wide(name), std::ios::binary);
    if (!(file << bytes).flush()) throw std::runtime_error("cannot write " + name);
    return path(name);
}

std::string Scratch::read(const std::string& name) const
{
    std::ifstream file(folder_ / wide(name), std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + name);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> Scratch::list() const
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_))
        names.push_back(narrow(entry.path().filename()));
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> result;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        result.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return result;
}

} // namespace toolbelt::test
