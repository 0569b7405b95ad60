// The header band: its pixels, its controls' fonts and colours, the saved position.
#include "Includes/cDlg/colored_dlg.h"

#include "Includes/cDlg/dialog_procedure.h"
#include "Includes/cDlg/gradient.h"
#include "Includes/cDlg/header_layout.h"
#include "Includes/system/sys_dll.h"
#include "tests/dialog/support.h"

extern "C" {
extern void* loadLibrarySlot __asm__("__imp__LoadLibraryExW@12");
}

namespace toolbelt::test {
namespace {

constexpr int BAND = 60;
constexpr COLORREF BLUE = RGB(20, 90, 200), GREEN = RGB(0, 255, 0), INK = RGB(1, 2, 3);

struct Header : Observed<cColoredDlg>
{
    Header()
    {
        colours.headerHeight = BAND;
        colours.titleId = HEADER_TITLE;
        colours.textId = HEADER_TEXT;
        colours.iconPlaceId = HEADER_ICON;
    }
    ~Header() override { DestroyWindow(window); }
    void OnHeaderColour(HDC device, HWND) override
    {
        SetTextColor(device, INK);
        EXPECT_EQ(GetBkMode(device), OPAQUE); // the mode is set behind it
    }
};

// A device of our own, green all over.
struct Canvas
{
    explicit Canvas(RECT size) : device(CreateCompatibleDC(nullptr))
    {
        BITMAPINFO info = {};
        info.bmiHeader = {sizeof info.bmiHeader, size.right, -size.bottom, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        bitmap = CreateDIBSection(device, &info, DIB_RGB_COLORS, nullptr, nullptr, 0);
        SelectObject(device, bitmap);
        Gradient(GREEN, size, device, GREEN);
    }
    ~Canvas()
    {
        DeleteDC(device);
        DeleteObject(bitmap);
    }
    COLORREF at(int x, int y) const { return GetPixel(device, x, y); }
    HDC device;
    HBITMAP bitmap;
};

// Blue for that share, the window colour for the rest, to a few steps a channel.
void expectMix(COLORREF seen, double share)
{
    for (const int shift : {0, 8, 16}) {
        const int from = BLUE >> shift & 255, to = GetSysColor(COLOR_WINDOW) >> shift & 255;
        EXPECT_NEAR(static_cast<int>(seen >> shift & 255), to + (from - to) * share, 6);
    }
}

int loads;
bool refuseImages;
const auto realLoad = reinterpret_cast<decltype(&LoadLibraryExW)>(loadLibrarySlot);

HMODULE WINAPI watchedLoad(const wchar_t* name, HANDLE file, DWORD flags)
{
    const bool images = _wcsicmp(name, L"Msimg32.dll") == 0;
    loads += images;
    return images && refuseImages ? nullptr : realLoad(name, file, flags);
}

TEST(Colored, BandLineAndGradient)
{
    const Replaced watched(&loadLibrarySlot, watchedLoad);
    Header dialog;
    const HWND window = dialog.open(DIALOG_HEADER);
    const RECT client = clientRect(window);
    const COLORREF white = GetSysColor(COLOR_WINDOW), line = GetSysColor(COLOR_INACTIVECAPTION);
    const int width = client.right;
    ASSERT_GT(client.bottom, BAND + 20);
    struct Case
    {
        COLORREF colour;
        int extension;
        bool shaded;
        int loads;
        CSysDll* wrapper = nullptr; // the process-wide one
    };
    CSysDll unloaded, loaded;
    loaded.Load(L"Msimg32.dll");
    for (const Case& c :
         {Case{0, 0, false, 0}, Case{BLUE, 0, true, 1}, Case{BLUE, 100, true, 1}, Case{BLUE, 0, false, 1},
          Case{white, 0, false, 0}, Case{BLUE, 0, false, 0, &unloaded}, Case{BLUE, 0, true, 0, &loaded}}) {
        EXPECT_EQ(setImageLibrary(c.wrapper), nullptr);
        dialog.colours.gradientColour = c.colour;
        dialog.colours.headerExtension = c.extension;
        refuseImages = !c.shaded;
        loads = 0;
        const Canvas canvas(client);
        EXPECT_EQ(SendMessageW(window, WM_ERASEBKGND, reinterpret_cast<WPARAM>(canvas.device), 0), 1);
        EXPECT_EQ(loads, c.loads);
        EXPECT_TRUE(canvas.at(0, BAND) == line && canvas.at(width - 1, BAND) == line);
        for (const int y : {BAND + 1, static_cast<int>(client.bottom) - 1})
            EXPECT_EQ(canvas.at(width - 1, y), GetSysColor(COLOR_BTNFACE));
        // A point's share of the first colour falls with its way to the corners on the right and below.
        for (const auto& [x, y] : {std::pair(0, 0), std::pair(width / 4, BAND / 4), std::pair(width - 1, 0),
                                   std::pair(0, BAND - 1), std::pair(width - 1, BAND - 1)}) {
            const double share = std::max(0.0, 1 - x / double(width + c.extension) - y / double(BAND));
            expectMix(canvas.at(x, y), c.shaded ? share : 0);
        }
        EXPECT_EQ(setImageLibrary(nullptr), c.wrapper);
    }
    refuseImages = false;

    // Left to the system: no band, not enabled, no colours wanted.
    const auto untouched = [&] {
        const Canvas canvas(client);
        return dialogProcedure(window, WM_ERASEBKGND, reinterpret_cast<WPARAM>(canvas.device), 0) == 0 &&
               canvas.at(5, 5) == GREEN;
    };
    EXPECT_FALSE(untouched());
    dialog.colours.headerHeight = 0;
    EXPECT_TRUE(untouched());
    dialog.colours.headerHeight = BAND;
    dialog.colours.enabled = 0;
    EXPECT_TRUE(untouched());
    dialog.colours.enabled = 1;
    EXPECT_FALSE(setNoColours(true));
    EXPECT_TRUE(untouched());
    EXPECT_TRUE(setNoColours(false));

    // On the screen, and anew after a change of size.
    dialog.colours.gradientColour = BLUE;
    dialog.colours.headerExtension = 0;
    ShowWindow(window, SW_SHOWNOACTIVATE);
    UpdateWindow(window);
    SetWindowPos(window, nullptr, 0, 0, width + 220, client.bottom + 100, SWP_NOMOVE | SWP_NOZORDER);
    UpdateWindow(window);
    const HDC device = GetDC(window);
    expectMix(GetPixel(device, 1, 1), 1);
    expectMix(GetPixel(device, clientRect(window).right / 2, 1), 0.5);
    EXPECT_EQ(GetPixel(device, 2, BAND), line);
    ReleaseDC(window, device);
}

TEST(Colored, HeaderTextsHaveTheirFontsAndTheWindowColour)
{
    Header dialog;
    const HWND window = dialog.open(DIALOG_HEADER);
    const cFonts fonts = dialog.colours.fonts;
    EXPECT_EQ(sharedFonts().arial12, fonts.arial12);
    // The font that a control gets; null when it is left to the system.
    const auto fontOf = [&](int id) -> HGDIOBJ {
        const Canvas canvas({0, 0, 1, 1});
        const LRESULT brush = SendMessageW(window, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(canvas.device),
                                           reinterpret_cast<LPARAM>(GetDlgItem(window, id)));
        const bool own = brush == reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_WINDOW));
        EXPECT_EQ(own, GetTextColor(canvas.device) == INK); // the hook
        EXPECT_TRUE(!own || GetBkMode(canvas.device) == TRANSPARENT);
        return own ? GetCurrentObject(canvas.device, OBJ_FONT) : nullptr;
    };
    EXPECT_EQ(fontOf(HEADER_TITLE), fonts.arial12);
    EXPECT_EQ(fontOf(HEADER_ICON), GetStockObject(SYSTEM_FONT)); // in the band, but neither text nor title
    EXPECT_EQ(fontOf(HEADER_TEXT), fonts.shell8);
    dialog.colours.largeText = 1;
    EXPECT_EQ(fontOf(HEADER_TEXT), fonts.shell10);
    for (const int top : {BAND - 1, BAND}) {
        SetWindowPos(GetDlgItem(window, BODY_TEXT), nullptr, 5, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
        EXPECT_EQ(fontOf(BODY_TEXT) != nullptr, top < BAND);
    }
    dialog.colours.enabled = 0;
    EXPECT_EQ(fontOf(HEADER_TITLE), nullptr);
}

TEST(Colored, OpensWhereItWasAndLaysOutAnew)
{
    for (const int left : {70, 0}) {
        RECT saved = {left, 50, 0, 0}, last;
        {
            Header dialog;
            dialog.colours.savedPosition = &saved;
            dialog.colours.titleText = L"Another caption";
            const HWND window = dialog.open(DIALOG_HEADER);
            const RECT own = windowRect(window);
            EXPECT_EQ(own.left == 70 && own.top == 50, left == 70);
            EXPECT_EQ(textOf(window), "Another caption");
            for (const int wider : {0, 90}) {
                SetWindowPos(window, nullptr, 0, 0, own.right - own.left + wider, own.bottom - own.top,
                             SWP_NOMOVE | SWP_NOZORDER);
                const auto [icon, title, text] =
                    layoutHeader(clientRect(window).right, BAND, screenDpi(), GetSystemMetrics(SM_CXICON), false);
                for (const auto& [id, box] :
                     {std::pair(HEADER_ICON, icon), std::pair(HEADER_TITLE, title), std::pair(HEADER_TEXT, text)}) {
                    RECT place = windowRect(GetDlgItem(window, id));
                    MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&place), 2);
                    const RECT expected = {box.left, box.top, box.left + box.width, box.top + box.height};
                    EXPECT_TRUE(EqualRect(&place, &expected)) << id;
                }
            }
            last = windowRect(window);
        }
        EXPECT_TRUE(EqualRect(&saved, &last));
    }
}

} // namespace
} // namespace toolbelt::test
