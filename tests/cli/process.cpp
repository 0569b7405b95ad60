#include "tests/cli/process.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <thread>

namespace toolbelt::test {
namespace {

std::wstring wide(const std::string& utf8)
{
    std::wstring text(utf8.size() + 1, L'\0');
    text.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()),
                                                             text.data(), static_cast<int>(text.size()))));
    return text;
}

std::string narrow(const std::wstring& text)
{
    std::string utf8(3 * text.size() + 1, '\0');
    utf8.resize(
        static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                                     utf8.data(), static_cast<int>(utf8.size()), nullptr, nullptr)));
    return utf8;
}

// As the C runtime takes a command line apart.
std::wstring quoted(const std::wstring& argument)
{
    std::wstring text = L"\"";
    for (std::size_t i = 0; i <= argument.size(); ++i) {
        std::size_t slashes = 0;
        while (i < argument.size() && argument[i] == L'\\') ++slashes, ++i;
        const bool beforeQuote = i == argument.size() || argument[i] == L'"';
        text.append(beforeQuote ? 2 * slashes : slashes, L'\\');
        if (i == argument.size()) break;
        if (argument[i] == L'"') text += L'\\';
        text += argument[i];
    }
    return text + L"\"";
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

std::string readAll(HANDLE handle)
{
    std::string text;
    char piece[65536];
    for (DWORD got = 0; ReadFile(handle, piece, sizeof piece, &got, nullptr) && got > 0;) text.append(piece, got);
    CloseHandle(handle);
    return text;
}

std::wstring programFolder()
{
    wchar_t path[MAX_PATH];
    const std::wstring program(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
    return program.substr(0, program.find_last_of(L"\\/") + 1);
}

} // namespace

Outcome run(const std::vector<std::string>& arguments, const std::string& input)
{
    static const std::wstring vectors = wide(TOOLBELT_VECTORS);
    std::wstring command = quoted(programFolder() + L"toolbelt.exe");
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
    std::thread errors([&] { outcome.err = readAll(err.reading); });
    std::thread feeder([&] {
        DWORD written = 0;
        for (std::size_t at = 0; at < input.size(); at += written)
            if (!WriteFile(in.writing, input.data() + at, static_cast<DWORD>(input.size() - at), &written, nullptr))
                break;
        CloseHandle(in.writing);
    });
    outcome.out = readAll(out.reading);
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

Scratch::Scratch()
{
    wchar_t base[MAX_PATH];
    folder_ = std::wstring(base, GetTempPathW(MAX_PATH, base)) +
              L"toolbelt \x041F\x0440\x043E\x0431\x0430 \x6F22\x5B57 " + std::to_wstring(GetCurrentProcessId()) + L"\\";
    if (!CreateDirectoryW(folder_.c_str(), nullptr)) throw std::runtime_error("no scratch folder");
}

Scratch::~Scratch()
{
    for (const std::string& name : list()) DeleteFileW((folder_ + wide(name)).c_str());
    RemoveDirectoryW(folder_.c_str());
}

std::string Scratch::path(const std::string& name) const
{
    return narrow(folder_) + name;
}

std::wstring Scratch::widePath(const std::string& name) const
{
    return folder_ + wide(name);
}

std::string Scratch::write(const std::string& name, const std::string& bytes) const
{
    std::FILE* file = _wfopen((folder_ + wide(name)).c_str(), L"wb");
    if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size())
        throw std::runtime_error("cannot write " + name);
    std::fclose(file);
    return path(name);
}

std::string Scratch::read(const std::string& name) const
{
    std::FILE* file = _wfopen((folder_ + wide(name)).c_str(), L"rb");
    if (!file) throw std::runtime_error("cannot read " + name);
    std::string bytes;
    char piece[4096];
    for (std::size_t got = 0; (got = std::fread(piece, 1, sizeof piece, file)) > 0;) bytes.append(piece, got);
    std::fclose(file);
    return bytes;
}

std::vector<std::string> Scratch::list() const
{
    std::vector<std::string> names;
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((folder_ + L"*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return names;
    do {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) names.push_back(narrow(found.cFileName));
    } while (FindNextFileW(search, &found));
    FindClose(search);
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
