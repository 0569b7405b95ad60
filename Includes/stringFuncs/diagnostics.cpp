#include "Includes/stringFuncs/diagnostics.h"

#include <atomic>

#include "Includes/stringFuncs/formatter.h"

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <cstdio>
#endif

namespace toolbelt {
namespace {

void writeToDebugger(const wchar_t* message)
{
#if defined(_WIN32)
    OutputDebugStringW(message);
#else
    for (; *message; ++message) std::fputc(*message < 0x80 ? static_cast<char>(*message) : '?', stderr);
    std::fputc('\n', stderr);
#endif
}

void writeAssertion(const wchar_t* expression, const wchar_t* file, std::int32_t line)
{
    wchar_t message[256];
    formatWide(message, 256, L"Assertion failed: %s, file %s, line %d", expression, file, line);
    debugMessage(message);
}

std::atomic<DebugChannel> debugChannel = nullptr;
std::atomic<AssertionReport> assertionReport = nullptr;

} // namespace

DebugChannel setDebugChannel(DebugChannel channel) noexcept
{
    return debugChannel.exchange(channel);
}

void debugMessage(const wchar_t* message) noexcept
{
    if (message == nullptr) return;
    const DebugChannel channel = debugChannel.load();
    (channel ? channel : writeToDebugger)(message);
}

void reportOutOfMemory() noexcept
{
    debugMessage(L"Assertion! Error in memory allocation!");
}

AssertionReport setAssertionReport(AssertionReport report) noexcept
{
    return assertionReport.exchange(report);
}

void reportAssertion(const wchar_t* expression, const wchar_t* file, std::int32_t line) noexcept
{
    const AssertionReport report = assertionReport.load();
    (report ? report : writeAssertion)(expression, file, line);
}

void SafeFree(std::nullptr_t) noexcept
{
    reportAssertion(L"false", L"stringFuncs", 146); // a fixed place, the same in every version
}

} // namespace toolbelt
