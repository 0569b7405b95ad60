#include "tests/cli/process.h"

#include <windows.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

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

struct Pipe
{
    HANDLE reading = nullptr, writing = nullptr;
    explicit Pipe(bool parentWrites)
    {
        SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
        if (!CreatePipe(&reading, &writing, &inherit, 0)) throw std::runtime_error("no pipe");
        SetHandleInformation(parentWrites ? writing : reading, HANDLE_FLAG_INHERIT, 0);
    }
};

// What the process writes until it has ended. The pipe may stay open longer: a program that the system starts on its
// behalf inherits it.
std::string readAll(HANDLE handle, HANDLE process)
{
    std::string text;
    std::vector<char> piece(65536);
    for (;;) {
        const bool ended = WaitForSingleObject(process, 0) == WAIT_OBJECT_0;
        DWORD there = 0, got = 0;
        if (!PeekNamedPipe(handle, nullptr, 0, nullptr, &there, nullptr)) break;
        if (there != 0 && ReadFile(handle, piece.data(), static_cast<DWORD>(piece.size()), &got, nullptr))
            text.append(piece.data(), got);
        else if (ended)
            break;
        else
            Sleep(2);
    }
    CloseHandle(handle);
    return text;
}

std::filesystem::path programFolder()
{
    wchar_t path[MAX_PATH];
    return std::filesystem::path(path, path + GetModuleFileNameW(nullptr, path, MAX_PATH)).parent_path();
}

} // namespace

Outcome run(const Arguments& arguments, const std::string& input)
{
    static const std::wstring vectors = wide(TOOLBELT_VECTORS);
    std::wstring command = quoted(programFolder() / L"toolbelt.exe");
    for (const std::string& argument : arguments) command += L" " + quoted(wide(argument));

    Pipe in(true), out(false), err(false);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = in.reading;
    startup.hStdOutput = out.writing;
    startup.hStdError = err.writing;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, vectors.c_str(), &startup,
                        &process))
        throw std::runtime_error("toolbelt.exe does not start");
    for (const HANDLE handle : {in.reading, out.writing, err.writing}) CloseHandle(handle);

    Outcome outcome;
    std::thread errors([&] { outcome.err = readAll(err.reading, process.hProcess); });
    std::thread feeder([&] {
        DWORD written = 0;
        for (std::size_t at = 0; at < input.size(); at += written)
            if (!WriteFile(in.writing, input.data() + at, static_cast<DWORD>(input.size() - at), &written, nullptr))
                break;
        CloseHandle(in.writing);
    });
    outcome.out = readAll(out.reading, process.hProcess);
    feeder.join();
    errors.join();
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD exitCode = 0;
    GetExitCodeProcess(process.hProcess, &exitCode);
    outcome.exitCode = static_cast<int>(exitCode);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return outcome;
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
