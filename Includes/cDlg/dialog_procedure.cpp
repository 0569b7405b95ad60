#include "Includes/cDlg/dialog_procedure.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <algorithm>
#include <type_traits>

#include "Includes/cDlg/dlg.h"
#include "Includes/stringFuncs/diagnostics.h"
#include "Includes/system/resource_library.h"

namespace toolbelt {
namespace {

static_assert(std::is_same_v<DLGPROC, decltype(&dialogProcedure)> && std::is_same_v<WNDPROC, WindowProcedure>);
static_assert(std::is_same_v<COLORREF, Colour>);

// The caption's hot area, in pixels from the window's right and top edges.
constexpr int HOT_AREA_LEFT = 78;
constexpr int HOT_AREA_RIGHT = 51;
constexpr int HOT_AREA_ABOVE = 4;
constexpr int HOT_AREA_BELOW = 14;

constexpr int SMALL_ICON_SIZE = 16;
constexpr wchar_t BIG_ICON[] = L"toolbelt.big_icon"; // the window's property that owns it

constexpr UINT KEEP_PLACE = SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE;

void centreOnScreen(HWND window)
{
    RECT work, own;
    if (!SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0) || !GetWindowRect(window, &own)) return;
    const LONG left = work.left + (work.right - work.left - (own.right - own.left)) / 2;
    const LONG top = work.top + (work.bottom - work.top - (own.bottom - own.top)) / 2;
    // The caption stays in reach when the dialog is larger than the screen.
    SetWindowPos(window, nullptr, std::max(left, work.left), std::max(top, work.top), 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void releaseBigIcon(HWND window)
{
    if (const HANDLE icon = RemovePropW(window, BIG_ICON)) DestroyIcon(static_cast<HICON>(icon));
}

void setIcons(HWND window, HINSTANCE instance, std::uint32_t id)
{
    const auto load = [&](int size, UINT flags) {
        return LoadImageW(instance, MAKEINTRESOURCEW(id), IMAGE_ICON, size, size, flags);
    };
    const auto set = [&](WPARAM kind, HANDLE icon) {
        SendMessageW(window, WM_SETICON, kind, reinterpret_cast<LPARAM>(icon));
    };
    set(ICON_SMALL, load(SMALL_ICON_SIZE, LR_SHARED));
    // A second shared one could be the first again, enlarged: the system may look for them by their names alone.
    HANDLE big = load(0, LR_DEFAULTSIZE);
    const HANDLE before = RemovePropW(window, BIG_ICON); // of an earlier initialisation
    if (big && !SetPropW(window, BIG_ICON, big)) {
        DestroyIcon(static_cast<HICON>(big));
        big = nullptr;
    }
    set(ICON_BIG, big);
    if (before) DestroyIcon(static_cast<HICON>(before)); // no longer shown
}

cDlg* initialise(HWND window, LPARAM parameter)
{
    // An owner counts as a parent; GetParent tells of it to pop-ups alone.
    const bool isChild = GetWindowLongW(window, GWL_STYLE) & WS_CHILD;
    if (!isChild && !GetWindow(window, GW_OWNER)) centreOnScreen(window);
    const ResourceLibrary* const library = loadedResourceLibrary();
    if (library && library->initialiseDialog && library->identifier != NO_RESOURCE_IDENTIFIER)
        library->initialiseDialog(library->identifier, window);

    cDlg* const dialog = reinterpret_cast<cDlg*>(parameter);
    if (!dialog) return nullptr;
    dialog->window = window;
    SetWindowLongW(window, GWLP_USERDATA, parameter);
    DlgRecord& record = dialog->record;
    RECT own;
    if (GetWindowRect(window, &own)) {
        record.minimumWidth = record.maximumWidth = own.right - own.left;
        record.minimumHeight = record.maximumHeight = own.bottom - own.top;
        record.sizeLimits = LIMIT_MINIMUM_WIDTH | LIMIT_MINIMUM_HEIGHT;
    }
    if (record.iconId != 0 && record.iconId <= 0xFFFF) setIcons(window, dialog->instance, record.iconId);
    return dialog;
}

void applyLimits(const DlgRecord& record, MINMAXINFO& info)
{
    if (record.sizeLimits & LIMIT_MINIMUM_WIDTH) info.ptMinTrackSize.x = record.minimumWidth;
    if (record.sizeLimits & LIMIT_MINIMUM_HEIGHT) info.ptMinTrackSize.y = record.minimumHeight;
    if (record.sizeLimits & LIMIT_MAXIMUM_WIDTH) info.ptMaxTrackSize.x = record.maximumWidth;
    if (record.sizeLimits & LIMIT_MAXIMUM_HEIGHT) info.ptMaxTrackSize.y = record.maximumHeight;
}

bool isInHotArea(HWND window, LPARAM point)
{
    const int x = static_cast<short>(LOWORD(point));
    const int y = static_cast<short>(HIWORD(point));
    RECT own;
    return GetWindowRect(window, &own) && x >= own.right - HOT_AREA_LEFT && x <= own.right - HOT_AREA_RIGHT &&
           y >= own.top - HOT_AREA_ABOVE && y <= own.top + HOT_AREA_BELOW;
}

} // namespace

int __stdcall dialogProcedure(WindowHandle window, unsigned int message, WordParameter word, LongParameter parameter)
{
    if (message == WM_NCDESTROY) releaseBigIcon(window); // the last message, object or not
    cDlg* const dialog = message == WM_INITDIALOG ? initialise(window, parameter)
                                                  : reinterpret_cast<cDlg*>(GetWindowLongW(window, GWLP_USERDATA));
    if (dialog && dialog->window != window) reportAssertion(L"false", L"cDlg", 442);
    if (message == WM_NOTIFYFORMAT) {
        // The system takes a dialog's answer from the window, not from the procedure.
        SetWindowLongW(window, DWLP_MSGRESULT, NFR_UNICODE);
        return NFR_UNICODE;
    }
    if (!dialog) return 0;

    if (message == WM_GETMINMAXINFO && parameter != 0 && dialog->record.sizeLimits != 0) {
        applyLimits(dialog->record, *reinterpret_cast<MINMAXINFO*>(parameter));
        return 0;
    }
    if (const MessageResult answer = dialog->OnMessage(message, word, parameter)) return answer;
    if (message == WM_NCLBUTTONDOWN && dialog->record.captionButton != 0 && isInHotArea(window, parameter)) {
        dialog->OnCaptionButton(0);
        return 0;
    }

    const auto callHook = [&] {
        if (const MessageHook hook = dialog->record.messageHook) hook(*dialog, message, word, parameter);
    };
    if (message == WM_DESTROY) callHook();
    const WindowProcedure chained = dialog->record.chainedProcedure;
    const MessageResult answer =
        chained ? chained(window, message, word, parameter) : dialog->DefaultHandler(message, word, parameter);
    if (message != WM_DESTROY) callHook(); // the one that is set by now
    if (message == WM_INITDIALOG && dialog->record.topmost != 0)
        SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, KEEP_PLACE);
    return answer;
}

} // namespace toolbelt
