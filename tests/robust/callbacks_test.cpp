// What the system calls back: the procedures of dialogs, entered with the stack at each multiple of four.
#include <gtest/gtest.h>

#include "Includes/cDlg/colored_dlg.h"
#include "tests/dialog/resources.h"
#include "tests/robust/enter.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace toolbelt::test {
namespace {

struct Dialog : cColoredDlg
{
    int messages = 0;
    MessageResult OnMessage(unsigned int message, WordParameter words, LongParameter parameter) override
    {
        ++messages;
        return cColoredDlg::OnMessage(message, words, parameter);
    }
};

TEST(Callbacks, DialogProceduresAtAnyStack)
{
    Dialog dialog;
    dialog.record.useCopy = 1;
    dialog.record.sizeLimits = LIMIT_MINIMUM_WIDTH;
    dialog.colours.headerHeight = 60;
    dialog.colours.titleId = HEADER_TITLE;
    dialog.colours.gradientColour = RGB(10, 120, 200);
    ASSERT_TRUE(dialog.Create(GetModuleHandleW(nullptr), DIALOG_HEADER, nullptr, nullptr));
    const HWND window = static_cast<HWND>(dialog.window);
    const void* const procedure = reinterpret_cast<void*>(GetWindowLongPtrW(window, DWLP_DLGPROC));
    const HDC device = GetDC(window);
    MINMAXINFO limits = {};
    const struct
    {
        UINT message;
        std::uint32_t words, parameter;
        bool answered;
    } messages[] = {{WM_ERASEBKGND, word(device), 0, true},
                    {WM_CTLCOLORSTATIC, word(device), word(GetDlgItem(window, HEADER_TITLE)), true},
                    {WM_GETMINMAXINFO, 0, word(&limits), false},
                    {WM_SIZE, 0, 0x00640064, false},
                    {WM_NCHITTEST, 0, 0, false},
                    {WM_SETTINGCHANGE, 0, 0, false}};
    for (const auto& [message, words, parameter, answered] : messages)
        for (std::uint32_t off = 0; off < 16; off += 4) {
            limits = {};
            dialog.messages = 0;
            const auto answer = enterAt(off, procedure, nullptr, window, message, words, parameter);
            EXPECT_EQ(answer != 0, answered) << message << " off by " << off;
            EXPECT_EQ(limits.ptMinTrackSize.x > 0, message == WM_GETMINMAXINFO);
            EXPECT_TRUE(dialog.messages > 0 || message == WM_GETMINMAXINFO) << message << " was not passed on";
        }
    ReleaseDC(window, device);
    DestroyWindow(window);
}

} // namespace
} // namespace toolbelt::test
