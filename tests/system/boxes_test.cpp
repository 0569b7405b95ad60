// A box of the system's own on the screen, read and closed from outside.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

#include "Includes/stringFuncs/diagnostics.h"
#include "Includes/system/dll.h"
#include "Includes/system/message_box.h"
#include "tests/system/support.h"

namespace toolbelt::test {
namespace {

TEST(ErrorBox, IsShownReadAndClosedAndHoldsUpNobodyElse)
{
    // A desktop of its own: one that another program has left behind may have lost its screen.
    const HDESK before = GetThreadDesktop(GetCurrentThreadId());
    const HDESK desktop = CreateDesktopW(L"toolbelt-boxes", nullptr, nullptr, 0, GENERIC_ALL, nullptr);
    ASSERT_TRUE(SetThreadDesktop(desktop));
    CDll dll;
    std::thread user([&] {
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
    // Of the flags, Wine's boxes show this one alone.
    const HWND icon = FindWindowExA(window, nullptr, "Static", nullptr);
    EXPECT_EQ(SendMessageA(icon, STM_GETICON, 0, 0), reinterpret_cast<LRESULT>(LoadIconW(nullptr, IDI_HAND)));
    PostMessageA(window, WM_COMMAND, IDOK, 0);
    user.join();
    EXPECT_TRUE(SetThreadDesktop(before) && CloseDesktop(desktop));
}

TEST(ErrorBox, GoesToTheDebugChannelWhenItCannotBeShown)
{
    EXPECT_EQ(setMessageBoxFunction(nullptr), nullptr); // the default
    setDebugChannel([](const wchar_t* message) { std::fputws(message, stderr); });
    const auto showUnseen = [](HWINSTA station, void* window) {
        std::thread([] { Sleep(20000), std::_Exit(2); }).detach(); // a box that nobody can close
        if (station && !SetProcessWindowStation(station)) std::_Exit(3);
        std::_Exit(showMessage(window, L"unseen", L"title", MESSAGE_ICON_STOP));
    };
    const testing::ExitedWithCode none(0);
    EXPECT_EXIT(showUnseen(nullptr, reinterpret_cast<void*>(0x7FFE)), none, "unseen"); // no such window
    EXPECT_EXIT(showUnseen(CreateWindowStationW(nullptr, 0, GENERIC_ALL, nullptr), nullptr), none, "unseen");
    setDebugChannel(nullptr);
}

} // namespace
} // namespace toolbelt::test
