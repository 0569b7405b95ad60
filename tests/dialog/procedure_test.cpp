// The shared dialog procedure: what it does itself, and in which order it asks the others.
#include "Includes/cDlg/dialog_procedure.h"

#include "tests/dialog/support.h"

namespace toolbelt::test {
namespace {

Texts steps;

bool note(const char* step, UINT message)
{
    if (message == WM_APP || message == WM_DESTROY) steps.push_back(step);
    return message == WM_APP;
}

void tracingHook(cDlg&, UINT message, WPARAM, LPARAM)
{
    note("hook", message);
}

struct Tracing : Observed<cDlg>
{
    MessageResult DefaultHandler(UINT message, WPARAM word, LPARAM parameter) override
    {
        if (message == WM_APP) record.messageHook = tracingHook; // from then on
        return note("last", message) ? 11 : cDlg::DefaultHandler(message, word, parameter);
    }
    void OnCaptionButton(std::int32_t zero) override { steps.push_back("caption " + std::to_string(zero)); }
};

LRESULT CALLBACK chainedProcedure(HWND, UINT message, WPARAM, LPARAM)
{
    return note("last", message) ? 12 : 0;
}

TEST(DialogProcedure, AsksInOrder)
{
    for (const WindowProcedure chained : {WindowProcedure(nullptr), WindowProcedure(chainedProcedure)}) {
        Tracing dialog;
        MessageResult answer = 0;
        if (chained) dialog.record.messageHook = tracingHook;
        dialog.onMessage = [&](UINT message, WPARAM, LPARAM) { return note("OnMessage", message) ? answer : 0; };
        const HWND window = dialog.Create(GetModuleHandleW(nullptr), DIALOG_CLASSIC, nullptr, chained);
        EXPECT_EQ(dialogProcedure(window, WM_APP, 0, 0), chained ? 12 : 11);
        answer = 7;
        EXPECT_EQ(dialogProcedure(window, WM_APP, 0, 0), 7);
        DestroyWindow(window);
        EXPECT_EQ(std::exchange(steps, {}),
                  (Texts{"OnMessage", "last", "hook", "OnMessage", "OnMessage", "hook", "last"}));
    }
}

TEST(DialogProcedure, AnswersForTheWindow)
{
    const Recorder recorder;
    Tracing dialog;
    dialog.record.iconId = ICON_KEY;
    dialog.record.topmost = 1;
    const HWND window = dialog.open(DIALOG_EXTENDED);
    EXPECT_TRUE(GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_TOPMOST);
    EXPECT_FALSE(IsWindowVisible(window)); // topmost shows nothing

    EXPECT_EQ(SendMessageW(window, WM_NOTIFYFORMAT, 0, NF_QUERY), NFR_UNICODE);
    EXPECT_EQ(dialogProcedure(GetDesktopWindow(), WM_NOTIFYFORMAT, 0, NF_QUERY), 2); // without an object
    EXPECT_EQ(dialogProcedure(GetDesktopWindow(), WM_COMMAND, IDOK, 0), 0);
    EXPECT_EQ(recorder.take(), Texts{});
    dialog.window = GetDesktopWindow();
    EXPECT_EQ(dialogProcedure(window, WM_APP, 0, 0), 11); // goes on
    EXPECT_EQ(recorder.take(), Texts{"false cDlg 442"});
    steps.clear();
    dialog.window = window;

    for (const auto& [kind, size] : {std::pair(ICON_SMALL, 16), {ICON_BIG, GetSystemMetrics(SM_CXICON)}}) {
        ICONINFO parts = {};
        EXPECT_TRUE(GetIconInfo(reinterpret_cast<HICON>(SendMessageW(window, WM_GETICON, kind, 0)), &parts));
        EXPECT_EQ(parts.xHotspot, size / 2u); // of an icon: its middle
        DeleteObject(parts.hbmMask);
        DeleteObject(parts.hbmColor);
    }

    // The first size is the smallest; larger is fine.
    const RECT first = windowRect(window);
    for (const auto& [dx, dy] : {std::pair(-60, -1), std::pair(50, 30)}) {
        SetWindowPos(window, nullptr, 0, 0, first.right - first.left + dx, first.bottom - first.top + dy,
                     SWP_NOMOVE | SWP_NOZORDER);
        EXPECT_EQ(windowRect(window).right, first.right + std::max(dx, 0));
        EXPECT_EQ(windowRect(window).bottom, first.bottom + std::max(dy, 0));
    }
    bool offered = false;
    dialog.onMessage = [&](UINT message, WPARAM, LPARAM) { return offered |= message == WM_GETMINMAXINFO, 0; };
    DlgRecord& record = dialog.record;
    record.minimumWidth = 201, record.minimumHeight = 202, record.maximumWidth = 203, record.maximumHeight = 204;
    for (const std::uint32_t flags : {15, 0}) {
        record.sizeLimits = flags;
        MINMAXINFO info = {};
        EXPECT_EQ(dialogProcedure(window, WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&info)), 0);
        EXPECT_TRUE(info.ptMinTrackSize.x == (flags ? 201 : 0) && info.ptMinTrackSize.y == (flags ? 202 : 0));
        EXPECT_TRUE(info.ptMaxTrackSize.x == (flags ? 203 : 0) && info.ptMaxTrackSize.y == (flags ? 204 : 0));
        EXPECT_EQ(offered, flags == 0);
    }

    // The hot area, in coordinates of either sign; off unless enabled.
    SetWindowPos(window, nullptr, -30, -20, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    for (const std::uint8_t enabled : {1, 0})
        for (const auto& [left, below] : {std::pair(78, -4), {51, 14}, {79, 0}, {50, 0}, {60, -5}, {60, 15}}) {
            record.captionButton = enabled;
            const LPARAM point = MAKELPARAM(windowRect(window).right - left, windowRect(window).top + below);
            EXPECT_EQ(dialogProcedure(window, WM_NCLBUTTONDOWN, HTCAPTION, point), 0);
            const bool hit = enabled && (left == 78 || left == 51);
            EXPECT_EQ(std::exchange(steps, {}), hit ? Texts{"caption 0"} : Texts{}) << left << " " << below;
        }
    DestroyWindow(window);
    steps.clear();
}

} // namespace
} // namespace toolbelt::test
