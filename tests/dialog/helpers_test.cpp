// The countdown button, icon painting and text measuring.
#include "Includes/cDlg/countdown.h"
#include "Includes/cDlg/dialog_drawing.h"
#include "tests/dialog/support.h"

extern "C" {
extern void* systemParametersSlot __asm__("__imp__SystemParametersInfoW@16");
extern void* createFontSlot __asm__("__imp__CreateFontIndirectW@4");
}

namespace toolbelt::test {
namespace {

struct Counting : Observed<cDlg>, cCountdownButton
{
    using cCountdownButton::StartCountdown;
    using cCountdownButton::StopCountdown;
    Texts seen; // the first button's caption after each second, and commands
    bool keepOpen = true;

    MessageResult OnMessage(UINT message, WPARAM word, LPARAM parameter) override
    {
        if (message == WM_COMMAND) {
            seen.push_back(std::to_string(word));
            EXPECT_EQ(reinterpret_cast<HWND>(parameter), GetDlgItem(window, LOWORD(word)));
            return keepOpen;
        }
        if (!OnCountdownMessage(message, word)) return 0;
        seen.push_back(textOf(window, BUTTON_FIRST));
        return 1;
    }
};

TEST(Countdown, ShowsWhatIsLeftAndPressesOnce)
{
    Counting dialog;
    const HWND stray = CreateWindowW(L"button", L"On the desktop", 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    EXPECT_FALSE(dialog.StartCountdown(3, 0)); // no dialog yet
    DestroyWindow(stray);
    const HWND window = dialog.open(DIALOG_CLASSIC);
    const auto tick = [&](int count) {
        while (count-- > 0) SendMessageW(window, WM_TIMER, 3021, 0);
    };
    EXPECT_FALSE(dialog.StartCountdown(0, BUTTON_FIRST));
    EXPECT_FALSE(dialog.StartCountdown(3, BODY_TEXT, 3)); // no button's identifier, and there are two buttons
    tick(1);
    ASSERT_TRUE(dialog.StartCountdown(3, BUTTON_FIRST));
    EXPECT_EQ(textOf(window, BUTTON_FIRST), "&First");
    tick(5);
    EXPECT_EQ(dialog.seen,
              (Texts{"&First (2)", "&First (1)", std::to_string(MAKEWPARAM(BUTTON_FIRST, BN_CLICKED)), "&First"}));
    ASSERT_TRUE(dialog.StartCountdown(4, BODY_TEXT, 2)); // the second button, by number; stopped before the end
    tick(1);
    EXPECT_EQ(textOf(window, BUTTON_SECOND), "&Second (3)");
    dialog.StopCountdown();
    EXPECT_EQ(textOf(window, BUTTON_SECOND), "&Second");

    dialog.keepOpen = false; // by the system's timer, to the end
    const DWORD start = GetTickCount();
    ASSERT_TRUE(dialog.StartCountdown(2, BUTTON_SECOND));
    pump(20000, [&] { return !IsWindow(window); });
    EXPECT_FALSE(IsWindow(window));
    EXPECT_GE(GetTickCount() - start, 1900u);
}

TEST(DialogDrawing, IconStandsWhereThePlaceholderWas)
{
    const Recorder recorder;
    const HICON icon = static_cast<HICON>(
        LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(ICON_KEY), IMAGE_ICON, 32, 32, LR_SHARED));
    for (const bool rightToLeft : {false, true}) {
        const Language language(rightToLeft);
        Observed<cDlg> dialog;
        const HWND window = dialog.open(DIALOG_CLASSIC);
        ShowWindow(window, SW_SHOWNOACTIVATE);
        SetWindowPos(GetDlgItem(window, BODY_TEXT), nullptr, 40, 20, 32, 32, SWP_NOZORDER);
        UpdateWindow(window);
        const HDC device = GetDC(window);
        const auto drawn = [&](int x, int y) { return GetPixel(device, x, y) != GetSysColor(COLOR_BTNFACE); };
        PaintIcon(window, device, BODY_TEXT, icon);
        EXPECT_FALSE(IsWindowVisible(GetDlgItem(window, BODY_TEXT)));
        EXPECT_TRUE(drawn(56, 24) && drawn(44, 36) && drawn(68, 40)); // the tile, in from its edges
        EXPECT_FALSE(drawn(38, 36) || drawn(56, 18) || drawn(74, 36) || drawn(56, 54));
        EXPECT_EQ(recorder.take(), Texts{});
        PaintIcon(window, device, 999, icon);
        EXPECT_EQ(recorder.take().at(0).rfind("hWnd != NULL cDlg ", 0), 0u);
        ReleaseDC(window, device);
        DestroyWindow(window);
    }
}

decltype(&SystemParametersInfoW) realParameters;
bool refuseParameters;

BOOL WINAPI watchedParameters(UINT action, UINT size, void* record, UINT flags)
{
    EXPECT_TRUE(size == 504 && static_cast<NONCLIENTMETRICSW*>(record)->cbSize == 500);
    return !refuseParameters && realParameters(action, size, record, flags);
}
HFONT WINAPI refusedFont(const LOGFONTW*)
{
    return nullptr;
}

TEST(DialogDrawing, TextIsMeasuredInTheFontOfMessageBoxes)
{
    const Recorder recorder;
    realParameters = reinterpret_cast<decltype(realParameters)>(systemParametersSlot);
    const Replaced watched(&systemParametersSlot, watchedParameters);
    RECT one = {10, 20, 10, 20}, kept = {1, 2, 3, 4};
    wchar_t words[40] = L"Several words in one line";
    EXPECT_TRUE(MeasureText(words, DT_SINGLELINE, one));
    EXPECT_TRUE(one.left == 10 && one.top == 20 && one.right > 80 && one.bottom > 28);
    one.right = 40;
    MeasureText(words, DT_SINGLELINE | DT_END_ELLIPSIS | DT_MODIFYSTRING, one);
    EXPECT_STREQ(words, L"Several words in one line");
    refuseParameters = true;
    EXPECT_FALSE(MeasureText(L"x", 0, kept));
    EXPECT_EQ(recorder.take().at(0).rfind("false cDlg ", 0), 0u);
    refuseParameters = false;
    const Replaced refused(&createFontSlot, refusedFont);
    EXPECT_FALSE(MeasureText(L"x", 0, kept));
    EXPECT_EQ(recorder.take().at(0).rfind("hFont != NULL cDlg ", 0), 0u);
    EXPECT_TRUE(kept.right == 3 && kept.bottom == 4);
}

} // namespace
} // namespace toolbelt::test
