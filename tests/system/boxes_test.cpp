// A box of the system's own on the screen, read and closed from outside.
#include <windows.h>

#include <cstdio>
#include <thread>

#include "Includes/stringFuncs/diagnostics.h"
#include "Includes/system/dll.h"
#include "Includes/system/message_box.h"
#include "tests/system/support.h"

namespace toolbelt::test {
namespace {

std::wstring heard;

TEST(ErrorBox, IsShownReadAndClosedAndHoldsUpNobodyElse)
{
    // A desktop of its own: one that another program has left behind may have lost its screen.
    const HDESK desktop = CreateDesktopW(L"toolbelt-boxes", nullptr, nullptr, 0, GENERIC_ALL, nullptr);
    ASSERT_TRUE(SetThreadDesktop(desktop));
    CDll dll;
    std::thread user([&dll, desktop] {
        SetThreadDesktop(desktop);
        dll.Load(L"no such library.dll", nullptr, 1);
    });
    HWND window = nullptr;
    for (int tries = 0; tries < 300 && !IsWindowVisible(window); ++tries) {
        Sleep(50);
        window = FindWindowA("#32770", "Error");
    }
    if (!window) std::_Exit(1);        // nobody would ever close the box
    EXPECT_EQ(dll.getLastError(), 1u); // while the box is open
    char text[512] = "";
    GetDlgItemTextA(window, 0xFFFF, text, sizeof(text));
    EXPECT_STREQ(text, "Can not load module no such library.dll\nerr - 126");
    const HWND icon = FindWindowExA(window, nullptr, "Static", nullptr);
    EXPECT_EQ(SendMessageA(icon, STM_GETICON, 0, 0), reinterpret_cast<LRESULT>(LoadIconW(nullptr, IDI_HAND)));
    PostMessageA(window, WM_COMMAND, IDOK, 0);
    user.join();
}

TEST(ErrorBox, GoesToTheDebugChannelWhenItCannotBeShown)
{
    setDebugChannel([](const wchar_t* message) { heard = message; });
    EXPECT_EQ(showMessage(reinterpret_cast<void*>(0x7FFE), L"unseen", L"title", MESSAGE_ICON_STOP),
              0); // no such window
    setDebugChannel(nullptr);
    EXPECT_EQ(heard, L"unseen");
    EXPECT_EQ(setMessageBoxFunction(nullptr), nullptr); // the default
}

} // namespace
} // namespace toolbelt::test
