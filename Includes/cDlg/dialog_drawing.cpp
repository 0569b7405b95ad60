#include "Includes/cDlg/dialog_drawing.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <source_location>

#include "Includes/stringFuncs/diagnostics.h"

namespace toolbelt {
namespace {

// The record as systems before Vista know it, and the size that the query is told: newer systems have one more field.
// Systems of either age take this pair.
struct Metrics
{
    NONCLIENTMETRICSW record;
    std::int32_t later;
};
constexpr UINT RECORD_SIZE = 500;
constexpr UINT QUERY_SIZE = 504;
static_assert(sizeof(NONCLIENTMETRICSW) == RECORD_SIZE && sizeof(Metrics) == QUERY_SIZE);

void report(const wchar_t* expression, const std::source_location& where = std::source_location::current())
{
    reportAssertion(expression, L"cDlg", static_cast<std::int32_t>(where.line()));
}

HFONT createMessageFont()
{
    Metrics metrics = {};
    metrics.record.cbSize = RECORD_SIZE;
    if (!SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, QUERY_SIZE, &metrics, 0)) {
        report(L"false");
        return nullptr;
    }
    const HFONT font = CreateFontIndirectW(&metrics.record.lfMessageFont);
    if (!font) report(L"hFont != NULL");
    return font;
}

} // namespace

void PaintIcon(WindowHandle dialog, DeviceHandle device, std::int32_t placeholderId, IconHandle icon) noexcept
{
    const HWND placeholder = GetDlgItem(dialog, placeholderId);
    if (!placeholder) {
        report(L"hWnd != NULL");
        return;
    }
    ShowWindow(placeholder, SW_HIDE);
    RECT place;
    GetWindowRect(placeholder, &place);
    // Both corners together: in a mirrored dialog left and right change places.
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&place), 2);
    DrawIconEx(device, place.left, place.top, icon, 0, 0, 0, nullptr, DI_NORMAL | DI_NOMIRROR);
}

bool MeasureText(const wchar_t* text, std::uint32_t flags, Rectangle& rectangle) noexcept
{
    const HFONT font = createMessageFont();
    if (!font) return false;
    bool measured = false;
    if (const HDC screen = GetDC(nullptr)) {
        const HGDIOBJ before = SelectObject(screen, font);
        RECT needed = rectangle;
        const UINT format = (flags & ~static_cast<UINT>(DT_MODIFYSTRING)) | DT_CALCRECT;
        measured = DrawTextW(screen, text, -1, &needed, format) != 0;
        if (measured) rectangle = needed;
        SelectObject(screen, before);
        ReleaseDC(nullptr, screen);
    }
    DeleteObject(font);
    return measured;
}

} // namespace toolbelt
