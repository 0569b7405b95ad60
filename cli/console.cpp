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
std::atomic<int> guards = 0, fileGuards = 0;

constexpr DWORD PATIENCE = 800, STEP = 50; // milliseconds

// Runs on a thread of its own. The flag is set before the guards are counted, and a guard counts itself before it looks
// at the flag, so one of the two always sees the other.
BOOL WINAPI onControl(DWORD event)
{
    interrupted = true;
    if (guards != 0) {
        for (DWORD waited = 0; waited < PATIENCE; waited += STEP) Sleep(STEP);
        // When the window is closed, returning ends the program: the files go first, as far as the system waits.
        while (fileGuards != 0 && event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(STEP);
        if (fileGuards != 0) return TRUE;
        constexpr char message[] = "toolbelt: stopped\n";
        DWORD written = 0;
        WriteFile(GetStdHandle(STD_ERROR_HANDLE), message, sizeof message - 1, &written, nullptr);
    }
    ExitProcess(EXIT_SYSTEM);
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

StatusLine::StatusLine() : visible_(isConsole(STD_ERROR_HANDLE)) {}

void StatusLine::show(std::string_view text)
{
    if (!visible_) return;
    const int width = static_cast<int>(text.size()), rest = static_cast<int>(width_) - width;
    std::fprintf(stderr, "\r%.*s%*s", width, text.data(), rest > 0 ? rest : 0, "");
    std::fflush(stderr);
    width_ = text.size();
}

void StatusLine::clear()
{
    if (width_ == 0) return;
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(width_), "");
    std::fflush(stderr);
    width_ = 0;
}

Progress::Progress(std::string title, std::uint64_t total)
    : title_(std::move(title)), total_(total), started_(GetTickCount())
{}

void Progress::show(std::uint64_t done)
{
    if (!line_.visible()) return;
    const std::uint32_t now = GetTickCount();
    if (now - started_ < 1000 || (shown_ != 0 && now - shown_ < 200)) return;
    shown_ = now;
    char figures[64];
    const unsigned long long megabytes = done >> 20;
    if (total_ != 0)
        std::snprintf(figures, sizeof figures, "%3u %%  %llu MB  ", static_cast<unsigned>(done * 100 / total_),
                      megabytes);
    else
        std::snprintf(figures, sizeof figures, "%llu MB  ", megabytes);
    line_.show(figures + title_);
}

CleanupGuard::CleanupGuard(bool forFiles) : forFiles_(forFiles)
{
    if (forFiles_) ++fileGuards;
    ++guards;
}
CleanupGuard::~CleanupGuard()
{
    --guards;
    if (forFiles_) --fileGuards;
}

bool interruptRequested()
{
    return interrupted;
}

void checkInterrupt(const std::string& subject)
{
    if (interrupted) throw Failure(subject, "stopped", EXIT_SYSTEM);
}

} // namespace toolbelt::cli
