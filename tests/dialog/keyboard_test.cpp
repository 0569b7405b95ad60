// The program's dialogs without a mouse: keys are typed into toolbelt.exe, and its focus is watched from outside.
#include <thread>

#include "cli/dialogs.h"
#include "tests/cli/process.h"
#include "tests/dialog/support.h"

namespace toolbelt::test {
namespace {

// Of that dialog; 0 while it is not there.
int focusOf(const wchar_t* caption)
{
    const HWND window = FindWindowW(L"#32770", caption);
    GUITHREADINFO info = {};
    info.cbSize = sizeof info;
    const DWORD thread = GetWindowThreadProcessId(window, nullptr);
    if (!window || GetForegroundWindow() != window || !GetGUIThreadInfo(thread, &info)) return 0;
    return GetDlgCtrlID(info.hwndFocus);
}

void type(WORD key, bool alt)
{
    const auto send = [](WORD virtualKey, DWORD flags) {
        INPUT input = {};
        input.type = INPUT_KEYBOARD;
        input.ki.wVk = virtualKey;
        input.ki.dwFlags = flags;
        SendInput(1, &input, sizeof input);
    };
    if (alt) send(VK_MENU, 0);
    send(key, 0);
    send(key, KEYEVENTF_KEYUP);
    if (alt) send(VK_MENU, KEYEVENTF_KEYUP);
}

TEST(Keyboard, ReachesEverythingInTheProgramsDialogs)
{
    struct Step
    {
        WORD key;
        int focus; // then; 0: the dialog is closed
        bool alt = false;
    };
    const std::vector<Step> choices = {// Tab comes back to the choice that was made
                                       {VK_DOWN, FORM_SSH}, {'B', FORM_DER, true}, {VK_TAB, IDOK}, {VK_TAB, IDCANCEL},
                                       {VK_TAB, FORM_DER},  {'P', FORM_PEM, true}, {VK_RETURN, 0}};
    const struct
    {
        const char* kind;
        const wchar_t* caption;
        int focus; // at the start
        std::vector<Step> steps;
        const char* command;
    } rows[] = {
        {"plain", L"About Toolbelt", IDOK, {{VK_RETURN, 0}}, "ok\n"},
        {"plain", L"About Toolbelt", IDOK, {{VK_ESCAPE, 0}}, "cancel\n"},
        {"coloured", L"Toolbelt", FORM_PEM, choices, "ok\n"},
        {"coloured", L"Toolbelt", FORM_PEM, {{'E', 0, true}}, "ok\n"},
        {"coloured", L"Toolbelt", FORM_PEM, {{VK_ESCAPE, 0}}, "cancel\n"},
        {"countdown", L"Generating key", IDCANCEL, {{VK_RETURN, 0}}, "cancel\n"},
        {"countdown", L"Generating key", IDCANCEL, {{VK_ESCAPE, 0}}, "cancel\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.kind);
        Outcome outcome;
        std::thread tool([&] { outcome = run({"dialog", row.kind, "--seconds", "20", "--bits", "8192"}); });
        const auto waitFor = [&](int focus) {
            pump(10000, [&] { return focusOf(row.caption) == focus; });
            EXPECT_EQ(focusOf(row.caption), focus);
        };
        waitFor(row.focus);
        for (const Step& step : row.steps) {
            type(step.key, step.alt);
            waitFor(step.focus);
        }
        if (const HWND open = FindWindowW(L"#32770", row.caption)) PostMessageW(open, WM_COMMAND, IDCANCEL, 0);
        tool.join();
        EXPECT_EQ(outcome.out, row.command) << outcome.err;
    }
}

} // namespace
} // namespace toolbelt::test
