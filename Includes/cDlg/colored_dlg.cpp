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

// A picture in memory of the part of the client area that is to be painted, in the device's own coordinates: it is
// copied in one piece, so that nobody sees the steps of its making. There is none without memory for it, and none of
// mirrored dialogs, between whose devices systems copy with a column more or less.
class Picture
{
public:
    Picture(HDC target, const RECT& client) : target_(target)
    {
        RECT clip;
        if (GetLayout(target) != 0 || GetClipBox(target, &clip) == ERROR || !IntersectRect(&place_, &clip, &client))
            return;
        memory_ = CreateCompatibleDC(target);
        bitmap_ = memory_ ? CreateCompatibleBitmap(target, width(), height()) : nullptr;
        before_ = bitmap_ ? SelectObject(memory_, bitmap_) : nullptr;
        if (before_) SetWindowOrgEx(memory_, place_.left, place_.top, nullptr);
    }
    ~Picture()
    {
        if (before_) SelectObject(memory_, before_);
        if (bitmap_) DeleteObject(bitmap_);
        if (memory_) DeleteDC(memory_);
    }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    HDC device() const { return before_ ? memory_ : nullptr; } // null: there is none
    bool copy() const
    {
        return BitBlt(target_, place_.left, place_.top, width(), height(), memory_, place_.left, place_.top, SRCCOPY);
    }

private:
    int width() const { return place_.right - place_.left; }
    int height() const { return place_.bottom - place_.top; }

    HDC target_, memory_ = nullptr;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ before_ = nullptr;
    RECT place_ = {};
};

void paintBackground(HDC device, const RECT& client, const ColoredDlgRecord& colours)
{
    FillRect(device, &client, GetSysColorBrush(COLOR_BTNFACE));
    RECT header = client;
    header.bottom = std::min<LONG>(colours.headerHeight, client.bottom);
    FillRect(device, &header, GetSysColorBrush(COLOR_WINDOW));
    const RECT line = {header.left, header.bottom, header.right, header.bottom + 1};
    FillRect(device, &line, GetSysColorBrush(COLOR_INACTIVECAPTION));
    header.right += std::min<LONG>(colours.headerExtension, std::numeric_limits<LONG>::max() - header.right);
    if (colours.gradientColour != 0 && Gradient(colours.gradientColour, header, device, GetSysColor(COLOR_WINDOW)))
        return;
    FillRect(device, &header, GetSysColorBrush(COLOR_WINDOW));
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

void cColoredDlg::OnBackgroundPainted(DeviceHandle) {}

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
    // Unseen: each move that is shown would have the system paint the ground behind it there and then. The gradient
    // depends on the width, so that no part of the band stays as it was. The dialog cannot leave out the ground of its
    // children (WS_CLIPCHILDREN), since header texts and groups are drawn on it.
    RECT changed = {0, 0, width, colours.headerHeight};
    const auto place = [&](std::uint32_t id, const LayoutBox& box) {
        const HWND control = id != 0 ? GetDlgItem(window, static_cast<int>(id)) : nullptr;
        if (!control) return;
        const RECT before = placeIn(window, control);
        UnionRect(&changed, &changed, &before);
        SetWindowPos(control, nullptr, box.left, box.top, box.width, box.height,
                     SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOREDRAW);
    };
    place(colours.iconPlaceId, layout.icon);
    place(colours.titleId, layout.title);
    place(colours.textId, layout.text);
    RedrawWindow(window, &changed, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
}

bool cColoredDlg::eraseBackground(DeviceHandle target)
{
    RECT client;
    if (!GetClientRect(window, &client)) return false;
    const auto paint = [&](HDC device) {
        paintBackground(device, client, colours);
        OnBackgroundPainted(device);
    };
    const Picture picture(target, client);
    if (picture.device()) {
        paint(picture.device());
        if (picture.copy()) return true;
    }
    paint(target);
    return true;
}

MessageResult cColoredDlg::colourStatic(DeviceHandle device, WindowHandle control)
{
    if (placeIn(window, control).top >= colours.headerHeight) return 0;
    const auto id = static_cast<std::uint32_t>(GetDlgCtrlID(control));
    FontHandle font = nullptr; // an identifier of 0 names no control
    if (id != 0 && id == colours.textId)
        font = colours.largeText != 0 ? colours.fonts.shell10 : colours.fonts.shell8;
    else if (id != 0 && id == colours.titleId)
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
