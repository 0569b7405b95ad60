// Creation: modal and modeless, placed, mirrored, failing, and nothing left behind.
#include "Includes/cDlg/dlg.h"

#include "Includes/cDlg/colored_dlg.h"
#include "Includes/cDlg/dialog_drawing.h"
#include "Includes/stringFuncs/wcs.h"
#include "tests/dialog/support.h"
#include "tests/support/test_heap.h"

extern "C" {
extern void* dialogBoxSlot __asm__("__imp__DialogBoxIndirectParamW@20");
extern void* dialogBoxASlot __asm__("__imp__DialogBoxParamA@20");
}

namespace toolbelt::test {
namespace {

using Dialog = Observed<cDlg>;

LRESULT CALLBACK endWith77(HWND window, UINT message, WPARAM, LPARAM)
{
    return message == WM_COMMAND && EndDialog(window, 77);
}

TEST(Dlg, EndsWithTheCommandAndFollowsTheResourceLibrary)
{
    const Recorder recorder;
    for (const std::uint32_t id : {DIALOG_CLASSIC, DIALOG_EXTENDED})
        for (const int button : {BUTTON_FIRST, BUTTON_SECOND, static_cast<int>(IDCANCEL)}) {
            Language language(button == BUTTON_SECOND, button == IDCANCEL ? NO_RESOURCE_IDENTIFIER : 42u,
                              button == BUTTON_FIRST);
            if (id == DIALOG_EXTENDED) language.library.initialiseDialog = nullptr;
            Dialog dialog;
            RECT work, own = {};
            SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
            bool reversed = false;
            const auto look = [&] {
                own = windowRect(dialog.window);
                reversed = windowRect(GetDlgItem(dialog.window, BUTTON_FIRST)).left >
                           windowRect(GetDlgItem(dialog.window, BUTTON_SECOND)).left;
            };
            // What is no window is no parent.
            ASSERT_EQ(dialog.show(id, button, look, reinterpret_cast<HWND>(0x12345)), button);
            EXPECT_NEAR(own.left - work.left, work.right - own.right, 1);
            EXPECT_NEAR(own.top - work.top, work.bottom - own.bottom, 1);
            // Right to left, when it is loaded; its function unless there is none or no identifier.
            EXPECT_EQ(reversed, button == BUTTON_SECOND);
            EXPECT_EQ(recorder.take(), button == BUTTON_SECOND && id == DIALOG_CLASSIC ? Texts{"42"} : Texts{});
        }
    Dialog chained;
    chained.chained = endWith77;
    EXPECT_EQ(chained.show(DIALOG_CLASSIC, BUTTON_FIRST), 77);
}

TEST(Dlg, ModelessIsMadeFromTheResourceOrTheCopyWhereTheTemplateSays)
{
    Dialog parent;
    ASSERT_TRUE(parent.open(DIALOG_EXTENDED));
    SetWindowPos(parent.window, nullptr, 300, 200, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    const Language language(true);
    HWND window;
    for (const std::uint8_t useCopy : {0, 1}) {
        Dialog dialog;
        dialog.record.useCopy = useCopy;
        window = dialog.Create(parent.instance, DIALOG_CLASSIC, parent.window);
        ASSERT_TRUE(window && window == dialog.window && dialog.record.modeless == 1);
        EXPECT_EQ(IsWindowUnicode(window), useCopy);
        EXPECT_EQ((GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_LAYOUTRTL) != 0, useCopy); // the copy alone is adjusted
        EXPECT_NEAR(windowRect(window).left, 300 + 60, 40); // by the template's 30 units from its parent, not centred
        SendMessageW(window, WM_COMMAND, BUTTON_SECOND, 0);
        EXPECT_FALSE(IsWindow(window));
        ASSERT_TRUE(dialog.Create(parent.instance, DIALOG_CLASSIC, nullptr)); // once more by the same object
        window = dialog.window;
        EXPECT_EQ(dialog.open(DIALOG_CLASSIC), nullptr); // but not two at a time
        EXPECT_EQ(dialog.window, window);
        EXPECT_EQ(dialog.show(DIALOG_CLASSIC, IDOK), -1);
        dialog.onMessage = nullptr;
    }
    SendMessageW(window, WM_COMMAND, BUTTON_FIRST, 0); // the object is gone: nothing happens
    EXPECT_TRUE(DestroyWindow(window));
    DestroyWindow(parent.window);
}

bool refusedSilently;

template <typename Template>
INT_PTR CALLBACK refusedBox(HINSTANCE, Template, HWND, DLGPROC, LPARAM)
{
    if (!refusedSilently) SetLastError(sizeof(*Template()) == 1 ? 0x714 : ERROR_ACCESS_DENIED);
    return -1;
}

TEST(Dlg, FailuresAreToldOnce)
{
    const Recorder recorder;
    Dialog dialog;
    EXPECT_EQ(dialog.show(999, IDOK), -1); // no such template
    for (const std::uint32_t id : {999, 0x10000 + DIALOG_CLASSIC, DIALOG_IMPOSSIBLE})
        EXPECT_EQ(dialog.open(id), nullptr);
    EXPECT_EQ(recorder.take(), Texts{});
    for (const bool rightToLeft : {false, true}) {
        const Language language(rightToLeft);
        const Replaced first(&dialogBoxSlot, refusedBox<const DLGTEMPLATE*>);
        // The second attempt, by identifier and 8-bit.
        EXPECT_EQ(dialog.show(DIALOG_CLASSIC, BUTTON_SECOND, [&] { EXPECT_FALSE(IsWindowUnicode(dialog.window)); }),
                  BUTTON_SECOND);
        const Replaced second(&dialogBoxASlot, refusedBox<const char*>);
        EXPECT_EQ(dialog.show(DIALOG_CLASSIC, IDOK), -1);
        EXPECT_EQ(GetLastError(), 0x714u); // not the box's own
        cWCS text;
        EXPECT_EQ(recorder.take(), Texts{"Errror in creating dialog!|" + narrow(text.SystemErrorText(0x714)) + "|" +
                                         std::to_string(rightToLeft ? 0x180010 : 0x10)});
    }
    {
        const Replaced first(&dialogBoxSlot, refusedBox<const DLGTEMPLATE*>);
        refusedSilently = true; // no error: no second attempt, which would show the dialog
        SetLastError(ERROR_ACCESS_DENIED);
        EXPECT_EQ(dialog.show(DIALOG_CLASSIC, BUTTON_SECOND), -1);
        refusedSilently = false;
    }
    int shows = 0;
    dialog.show(DIALOG_CLASSIC, IDOK, [&] {
        ++shows;
        EndDialog(dialog.window, -1);
        SetLastError(ERROR_ACCESS_DENIED);
    });
    EXPECT_EQ(shows, 1); // a dialog that was there is not shown again
    EXPECT_EQ(recorder.take(), Texts{});

    const TestHeap heap; // fails the test when the buffer stays
    Dialog another;
    for (const std::uint32_t id : {DIALOG_EXTENDED, DIALOG_CLASSIC, DIALOG_HEADER}) {
        ASSERT_TRUE(another.open(id));
        DestroyWindow(another.window);
        EXPECT_EQ(heap.held(), 1u);
    }
}

TEST(Dlg, HelpFileLiesBesideTheProgram)
{
    wchar_t path[MAX_PATH], buffer[MAX_PATH];
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wcscpy(path + length - 3, L"CHM");
    cDlg dialog;
    EXPECT_EQ(dialog.HelpFilePath(buffer, MAX_PATH), nullptr);
    const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    ASSERT_EQ(dialog.HelpFilePath(buffer, length + 1), buffer);
    EXPECT_STREQ(buffer, path);
    EXPECT_EQ(dialog.HelpFilePath(buffer, length), nullptr);
    CloseHandle(file);
}

TEST(Dlg, HundredsLeaveNothing)
{
    const auto run = [](int count) {
        for (int i = 0; i < count; ++i) {
            Observed<cColoredDlg> dialog;
            dialog.record.iconId = ICON_KEY;
            dialog.colours.headerHeight = 60;
            dialog.colours.gradientColour = i % 2 ? RGB(10, 120, 200) : GetSysColor(COLOR_WINDOW);
            RECT needed = {};
            MeasureText(L"Text", 0, needed);
            dialog.colours.titleId = HEADER_TITLE;
            ASSERT_TRUE(dialog.open(DIALOG_HEADER));
            ShowWindow(dialog.window, SW_SHOWNOACTIVATE);
            UpdateWindow(dialog.window);
            DestroyWindow(dialog.window);
        }
    };
    run(5); // fonts, shared icons and what the system keeps
    const auto before = countObjects();
    run(200);
    EXPECT_EQ(countObjects(), before);
    // The count sees what is left on purpose.
    const HBRUSH brush = CreateSolidBrush(1);
    const HWND window = CreateWindowW(L"STATIC", L"", 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    EXPECT_TRUE(countObjects().first > before.first && countObjects().second > before.second);
    DeleteObject(brush);
    DestroyWindow(window);
}

} // namespace
} // namespace toolbelt::test
