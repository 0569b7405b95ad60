#include "Includes/cDlg/colored_dlg.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <limits>

#include "Includes/cDlg/gradient.h"
#include "Includes/cDlg/header_layout.h"

namespace toolbelt {
namespace {

std::atomic<bool> noColours = false;

RECT placeIn(HWND dialog, HWND control)
{
    RECT place = {};
    GetWindowRect(control, &place);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&place), 2);
    return place;
}

void moveTo(HWND control, const LayoutBox& box)
{
    SetWindowPos(control, nullptr, box.left, box.top, box.width, box.height, SWP_NOZORDER | SWP_NOACTIVATE);
}

} // namespace

MessageResult cColoredDlg::OnMessage(unsigned int message, WordParameter word, LongParameter parameter)
{
    const bool painted = colours.enabled != 0 && !noColours && colours.headerHeight != 0;
    switch (message) {
    case WM_INITDIALOG:
        if (colours.enabled != 0) initialise();
        return 0;
    case WM_SIZE:
        if (colours.enabled != 0) layOut(LOWORD(parameter));
        return 0;
    case WM_ERASEBKGND:
        if (!painted || !eraseBackground(reinterpret_cast<HDC>(word))) return 0;
        SetWindowLongW(window, DWLP_MSGRESULT, 1); // where the system looks for the answer
        return 1;
    case WM_CTLCOLORSTATIC:
        return painted ? colourStatic(reinterpret_cast<HDC>(word), reinterpret_cast<HWND>(parameter)) : 0;
    case WM_DESTROY:
        if (colours.savedPosition) GetWindowRect(window, colours.savedPosition);
        return 0;
    default:
        return 0;
    }
}

void cColoredDlg::OnHeaderColour(DeviceHandle, WindowHandle) {}

void cColoredDlg::initialise()
{
    const RECT* const saved = colours.savedPosition;
    if (saved && saved->left != 0)
        SetWindowPos(window, nullptr, saved->left, saved->top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    RECT client;
    if (GetClientRect(window, &client)) layOut(client.right);
    if (!colours.fonts.arial12) colours.fonts = sharedFonts();
    if (colours.titleText) SetWindowTextW(window, colours.titleText);
}

void cColoredDlg::layOut(std::int32_t width)
{
    if (colours.headerHeight == 0) return;
    const int iconSize = colours.iconPlaceId != 0 ? GetSystemMetrics(SM_CXICON) : 0;
    const HeaderLayout layout =
        layoutHeader(width, colours.headerHeight, screenDpi(), iconSize, colours.largeText != 0);
    const auto place = [this](std::uint32_t id, const LayoutBox& box) {
        const HWND control = id != 0 ? GetDlgItem(window, static_cast<int>(id)) : nullptr;
        if (control) moveTo(control, box);
    };
    place(colours.iconPlaceId, layout.icon);
    place(colours.titleId, layout.title);
    place(colours.textId, layout.text);
    // The gradient depends on the width, so that no part of the band stays as it was.
    const RECT band = {0, 0, width, colours.headerHeight};
    RedrawWindow(window, &band, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

bool cColoredDlg::eraseBackground(DeviceHandle device)
{
    RECT client;
    if (!GetClientRect(window, &client)) return false;
    FillRect(device, &client, GetSysColorBrush(COLOR_BTNFACE));
    RECT header = client;
    header.bottom = std::min<LONG>(colours.headerHeight, client.bottom);
    FillRect(device, &header, GetSysColorBrush(COLOR_WINDOW));
    const RECT line = {header.left, header.bottom, header.right, header.bottom + 1};
    FillRect(device, &line, GetSysColorBrush(COLOR_INACTIVECAPTION));
    header.right += std::min<LONG>(colours.headerExtension, std::numeric_limits<LONG>::max() - header.right);
    if (colours.gradientColour != 0 && Gradient(colours.gradientColour, header, device, GetSysColor(COLOR_WINDOW)))
        return true;
    FillRect(device, &header, GetSysColorBrush(COLOR_WINDOW));
    return true;
}

MessageResult cColoredDlg::colourStatic(DeviceHandle device, WindowHandle control)
{
    if (placeIn(window, control).top >= colours.headerHeight) return 0;
    const auto id = static_cast<std::uint32_t>(GetDlgCtrlID(control));
    FontHandle font = nullptr;
    if (id == colours.textId)
        font = colours.largeText != 0 ? colours.fonts.shell10 : colours.fonts.shell8;
    else if (id == colours.titleId)
        font = colours.fonts.arial12;
    if (font) {
        SelectObject(device, font);
        // Today's static controls select their own font behind this message; it is theirs from then on.
        if (reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)) != font)
            SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    }
    OnHeaderColour(device, control);
    SetBkMode(device, TRANSPARENT);
    return reinterpret_cast<MessageResult>(GetSysColorBrush(COLOR_WINDOW));
}

bool setNoColours(bool off) noexcept
{
    return noColours.exchange(off);
}

} // namespace toolbelt
