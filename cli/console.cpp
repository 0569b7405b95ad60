#include "cli/console.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <atomic>
#include <cstdio>

#include "cli/errors.h"

namespace toolbelt::cli {
namespace {

std::atomic<bool> interrupted = false;
std::atomic<int> guards = 0;

// Runs on a thread of its own. The flag is set before the guards are counted, and a guard counts itself before it looks
// at the flag, so one of the two always sees the other.
BOOL WINAPI onControl(DWORD event)
{
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
    interrupted = true;
    if (guards == 0) ExitProcess(EXIT_SYSTEM);
    return TRUE;
}

bool isConsole(DWORD stream)
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(stream), &mode) != 0;
}

} // namespace

void openConsole()
{
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    if (isConsole(STD_OUTPUT_HANDLE) || isConsole(STD_ERROR_HANDLE)) SetConsoleOutputCP(CP_UTF8);
    // The runtime gives a console no buffer; a character's bytes must not be written one by one.
    std::setvbuf(stdout, nullptr, _IOFBF, 1 << 16);
    std::setvbuf(stderr, nullptr, _IOFBF, 1 << 12);
    SetConsoleCtrlHandler(onControl, TRUE);
}

void print(std::string_view text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
        throw Failure("-", "cannot be written", EXIT_SYSTEM);
}

void printLine(std::string_view text)
{
    print(text);
    print("\n");
}

void flushOutput()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) throw Failure("-", "cannot be written", EXIT_SYSTEM);
}

void printFact(const Fact& fact, unsigned depth)
{
    print(std::string(2 * depth, ' ') + fact.name + (fact.value.empty() ? ":" : ": "));
    printLine(fact.value);
    for (const Fact& part : fact.parts) printFact(part, depth + 1);
}

Progress::Progress(std::string title, std::uint64_t total)
    : title_(std::move(title)), total_(total), started_(isConsole(STD_ERROR_HANDLE) ? GetTickCount() : 0)
{}

void Progress::show(std::uint64_t done)
{
    if (started_ == 0) return;
    const std::uint64_t now = GetTickCount();
    if (now - started_ < 1000 || (shown_ != 0 && now - shown_ < 200)) return;
    shown_ = now;
    const unsigned long long megabytes = done >> 20;
    if (total_ != 0)
        std::fprintf(stderr, "\r%3u %%  %llu MB  %s", static_cast<unsigned>(done * 100 / total_), megabytes,
                     title_.c_str());
    else
        std::fprintf(stderr, "\r%llu MB  %s", megabytes, title_.c_str());
    std::fflush(stderr);
}

Progress::~Progress()
{
    if (shown_ == 0) return;
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(title_.size()) + 24, "");
    std::fflush(stderr);
}

CleanupGuard::CleanupGuard()
{
    ++guards;
}
CleanupGuard::~CleanupGuard()
{
    --guards;
}

void checkInterrupt(const std::string& subject)
{
    if (interrupted) throw Failure(subject, "stopped", EXIT_SYSTEM);
}

} // namespace toolbelt::cli
