#include "tests/dialog/support.h"

#include <cstring>

#include "Includes/stringFuncs/diagnostics.h"
#include "Includes/system/message_box.h"
#include "tests/support/drawing_objects.h"

namespace toolbelt::test {
namespace {

Texts recorded;

void recordAssertion(const wchar_t* expression, const wchar_t* file, std::int32_t line)
{
    recorded.push_back(narrow(expression) + " " + narrow(file) + " " + std::to_string(line));
}

int __stdcall recordBox(void*, const char* text, const char* title, unsigned int flags)
{
    recorded.push_back(std::string(title) + "|" + text + "|" + std::to_string(flags));
    SetLastError(4711); // as the system's own box may
    return IDOK;
}

void recordInitialisation(std::uint32_t identifier, void* dialog)
{
    if (IsWindow(static_cast<HWND>(dialog))) recorded.push_back(std::to_string(identifier));
}

} // namespace

Recorder::Recorder()
{
    recorded.clear();
    setAssertionReport(recordAssertion);
    setMessageBoxFunction(recordBox);
}
Recorder::~Recorder()
{
    setAssertionReport(nullptr);
    setMessageBoxFunction(nullptr);
}
Texts Recorder::take()
{
    return std::exchange(recorded, {});
}

Language::Language(bool rightToLeft, std::uint32_t identifier, std::uint32_t status)
    : library{status, rightToLeft, identifier, recordInitialisation}
{
    setResourceLibrary(&library);
}

std::string narrow(const wchar_t* text)
{
    return std::string(text, text + std::wcslen(text));
}

RECT windowRect(HWND window)
{
    RECT rectangle = {};
    GetWindowRect(window, &rectangle);
    return rectangle;
}

RECT clientRect(HWND window)
{
    RECT rectangle = {};
    GetClientRect(window, &rectangle);
    return rectangle;
}

std::string textOf(HWND dialog, int id)
{
    wchar_t text[200] = {};
    GetWindowTextW(id ? GetDlgItem(dialog, id) : dialog, text, 200);
    return narrow(text);
}

void pump(DWORD milliseconds, const std::function<bool()>& done)
{
    const DWORD start = GetTickCount();
    while (!done() && GetTickCount() - start < milliseconds) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
    }
}

std::pair<int, int> countObjects()
{
    int windows = 0;
    for (std::uintptr_t handle = 0x20; handle < 0x2000; handle += 2) {
        DWORD process = 0;
        GetWindowThreadProcessId(reinterpret_cast<HWND>(handle), &process);
        windows += process == GetCurrentProcessId();
    }
    return {drawingObjects(), windows};
}

} // namespace toolbelt::test
