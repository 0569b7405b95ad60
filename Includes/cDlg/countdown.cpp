#include "Includes/cDlg/countdown.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace toolbelt {
namespace {

constexpr UINT PERIOD = 1000; // milliseconds

HWND nextButton(HWND dialog, HWND after)
{
    return FindWindowExW(dialog, after, L"button", nullptr);
}

HWND findButton(HWND dialog, std::int32_t id, std::int32_t n)
{
    HWND button = nextButton(dialog, nullptr);
    if (id != 0)
        for (HWND named = button; named; named = nextButton(dialog, named))
            if (GetDlgCtrlID(named) == id) return named;
    if (n < 1) return nullptr;
    while (button && --n > 0) button = nextButton(dialog, button);
    return button;
}

} // namespace

bool cCountdownButton::StartCountdown(std::int32_t seconds, std::int32_t buttonId, std::int32_t n)
{
    StopCountdown();
    // Children of no window would be those of the desktop.
    const HWND button = seconds > 0 && window ? findButton(window, buttonId, n) : nullptr;
    if (!button) return false;
    const std::int32_t length = GetWindowTextLengthW(button);
    if (caption_.Assign(L"") == 0 || caption_.SetLength(length) == 0) return false; // a text even for an empty caption
    GetWindowTextW(button, caption_.text(), length + 1);
    caption_.FixLength();
    if (SetTimer(window, COUNTDOWN_TIMER, PERIOD, nullptr) == 0) return false;
    button_ = button;
    buttonId_ = GetDlgCtrlID(button);
    left_ = seconds;
    return true;
}

void cCountdownButton::StopCountdown()
{
    if (!button_) return;
    KillTimer(window, COUNTDOWN_TIMER);
    SetWindowTextW(button_, caption_.text());
    button_ = nullptr;
}

bool cCountdownButton::OnCountdownMessage(unsigned int message, WordParameter word)
{
    if (message == WM_DESTROY) StopCountdown();
    if (message != WM_TIMER || word != COUNTDOWN_TIMER || !button_) return false;
    if (--left_ > 0) {
        cWCS text;
        text.Format(L"%s (%d)", caption_.text(), left_);
        if (text.text()) SetWindowTextW(button_, text.text()); // without memory this second is not shown
        return true;
    }
    const HWND button = button_;
    StopCountdown();
    SendMessageW(window, WM_COMMAND, MAKEWPARAM(buttonId_, BN_CLICKED), reinterpret_cast<LPARAM>(button));
    return true;
}

} // namespace toolbelt
