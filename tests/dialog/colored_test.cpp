// The header band: its pixels, its controls' fonts and colours, the saved position.
#include "Includes/cDlg/colored_dlg.h"

#include <cstring>
#include <memory>

#include "Includes/cDlg/dialog_procedure.h"
#include "Includes/cDlg/gradient.h"
#include "Includes/cDlg/header_layout.h"
#include "Includes/system/sys_dll.h"
#include "tests/dialog/support.h"

extern "C" {
extern void* loadLibrarySlot __asm__("__imp__LoadLibraryExW@12");
extern void* copySlot __asm__("__imp__BitBlt@36");
}

namespace toolbelt::test {
namespace {

constexpr LONG BAND = 60;
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

// A device of our own, green all over and larger than the dialog's client area.
struct Canvas
{
    explicit Canvas(RECT client) : device(CreateCompatibleDC(nullptr)), inside(client)
    {
        const RECT size = {0, 0, client.right + 10, client.bottom + 10};
        BITMAPINFO info = {};
        info.bmiHeader = {sizeof info.bmiHeader, size.right, -size.bottom, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        bitmap = CreateDIBSection(device, &info, DIB_RGB_COLORS, nullptr, nullptr, 0);
        SelectObject(device, bitmap);
        Gradient(GREEN, size, device, GREEN);
    }
    ~Canvas()
    {
        for (const auto& [x, y] : {std::pair(inside.right, 5L), {inside.right, BAND}, {5L, inside.bottom}})
            EXPECT_EQ(at(x, y), GREEN) << "outside";
        DeleteDC(device);
        DeleteObject(bitmap);
    }
    COLORREF at(int x, int y) const { return GetPixel(device, x, y); }
    HDC device;
    HBITMAP bitmap;
    RECT inside;
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
    const LONG width = client.right;
    ASSERT_GT(client.bottom, BAND + 20);
    CSysDll unloaded, loaded, *const none = nullptr; // the process-wide wrapper
    loaded.Load(L"Msimg32.dll");
    for (const auto& [colour, extension, shaded, wrapper, expectedLoads] : {std::tuple(0ul, 0, false, none, 0),
                                                                            {BLUE, 0, true, none, 1},
                                                                            {BLUE, 100, true, none, 1},
                                                                            {BLUE, 0, false, none, 1},
                                                                            {white, 0, false, none, 0},
                                                                            {BLUE, 0, false, &unloaded, 0},
                                                                            {BLUE, 0, true, &loaded, 0}}) {
        EXPECT_EQ(setImageLibrary(wrapper), nullptr);
        dialog.colours.gradientColour = colour;
        dialog.colours.headerExtension = extension;
        refuseImages = !shaded;
        loads = 0;
        const Canvas canvas(client);
        EXPECT_EQ(SendMessageW(window, WM_ERASEBKGND, reinterpret_cast<WPARAM>(canvas.device), 0), 1);
        EXPECT_EQ(loads, expectedLoads);
        EXPECT_TRUE(canvas.at(0, BAND) == line && canvas.at(width - 1, BAND) == line);
        for (const LONG y : {BAND + 1, client.bottom - 1})
            EXPECT_EQ(canvas.at(width - 1, y), GetSysColor(COLOR_BTNFACE));
        // A point's share of the first colour falls with its way to the corners on the right and below.
        for (const auto& [x, y] :
             {std::pair(0L, 0L), {width / 4, BAND / 4}, {width - 1, 0}, {0, BAND - 1}, {width - 1, BAND - 1}}) {
            const double share = std::max(0.0, 1 - x / double(width + extension) - y / double(BAND));
            expectMix(canvas.at(x, y), shaded ? share : 0);
        }
        EXPECT_EQ(setImageLibrary(nullptr), wrapper);
    }
    refuseImages = false;

    // Left to the system: no band, not enabled, no colours wanted.
    for (const auto& [height, enabled, off] :
         {std::tuple(BAND, 1, false), {0L, 1, false}, {BAND, 0, false}, {BAND, 1, true}}) {
        dialog.colours.headerHeight = height;
        dialog.colours.enabled = static_cast<std::uint8_t>(enabled);
        EXPECT_FALSE(setNoColours(off));
        const Canvas canvas(client);
        const bool painted = dialogProcedure(window, WM_ERASEBKGND, reinterpret_cast<WPARAM>(canvas.device), 0) != 0;
        EXPECT_EQ(painted, height != 0 && enabled && !off);
        EXPECT_EQ(painted, canvas.at(5, 5) != GREEN);
    }
    EXPECT_TRUE(setNoColours(false));
}

const auto realCopy = reinterpret_cast<decltype(&BitBlt)>(copySlot);
HDC watchedDevice;
bool refuseCopies;
int copies;

BOOL WINAPI watchedCopy(HDC to, int x, int y, int width, int height, HDC from, int fromX, int fromY, DWORD operation)
{
    if (to == watchedDevice && refuseCopies) return FALSE;
    copies += to == watchedDevice;
    return realCopy(to, x, y, width, height, from, fromX, fromY, operation);
}

// The ground comes in one copy, unless it is mirrored or that cannot be; a change of size paints a text once.
TEST(Colored, PaintsWithoutFlicker)
{
    for (const auto& [rightToLeft, refused] : {std::pair(false, false), {false, true}, {true, false}}) {
        const Language language(rightToLeft);
        Header dialog;
        dialog.colours.gradientColour = BLUE;
        const HWND window = dialog.open(DIALOG_HEADER);
        const RECT client = clientRect(window);
        const Canvas canvas(client);
        SetLayout(canvas.device, rightToLeft ? LAYOUT_RTL : 0);
        IntersectClipRect(canvas.device, 8, 3, client.right, BAND + 5); // as when a part of the window is uncovered
        watchedDevice = canvas.device;
        refuseCopies = refused;
        copies = 0;
        {
            const Replaced copy(&copySlot, watchedCopy);
            SendMessageW(window, WM_ERASEBKGND, reinterpret_cast<WPARAM>(canvas.device), 0);
        }
        EXPECT_EQ(copies, !rightToLeft && !refused); // else painted directly
        expectMix(canvas.at(client.right / 4, BAND / 4), 0.5);
        EXPECT_EQ(canvas.at(9, BAND), GetSysColor(COLOR_INACTIVECAPTION));
        EXPECT_TRUE(canvas.at(7, 5) == GREEN && canvas.at(9, BAND + 5) == GREEN);
        EXPECT_EQ(canvas.at(client.right - 1, BAND + 4), GetSysColor(COLOR_BTNFACE));

        int titles = 0, erasings = 0;
        dialog.onMessage = [&](UINT message, WPARAM, LPARAM control) {
            erasings += message == WM_ERASEBKGND;
            titles += message == WM_CTLCOLORSTATIC && GetDlgCtrlID(reinterpret_cast<HWND>(control)) == HEADER_TITLE;
            return 0;
        };
        ShowWindow(window, SW_SHOWNOACTIVATE);
        UpdateWindow(window);
        titles = erasings = 0;
        const RECT own = windowRect(window);
        SetWindowPos(window, nullptr, 0, 0, own.right - own.left + 50, own.bottom - own.top + 20, SWP_NOMOVE);
        UpdateWindow(window);
        EXPECT_EQ(titles, 1);
        EXPECT_LE(erasings, 2); // the first by the change itself
        const HDC device = GetDC(window);
        expectMix(GetPixel(device, 1, 1), 1);
        expectMix(GetPixel(device, clientRect(window).right / 2, 1), 0.5);
        ReleaseDC(window, device);
    }
}

TEST(Colored, HeaderTextsHaveTheirFontsAndTheWindowColour)
{
    Header dialog;
    const HWND window = dialog.open(DIALOG_HEADER);
    const cFonts fonts = dialog.colours.fonts, again = sharedFonts();
    EXPECT_EQ(std::memcmp(&fonts, &again, sizeof fonts), 0);
    for (const auto& [font, face, points] : {std::tuple(fonts.shell10, L"MS Shell Dlg", 10),
                                             {fonts.arial12, L"ARIAL", 12},
                                             {fonts.shell8, L"MS Shell Dlg", 8}}) {
        LOGFONTW made = {};
        ASSERT_TRUE(GetObjectW(font, sizeof made, &made));
        EXPECT_STREQ(made.lfFaceName, face);
        EXPECT_EQ(made.lfHeight, -MulDiv(points, screenDpi(), 72));
        EXPECT_TRUE(made.lfWeight == 700 && made.lfCharSet == 1 && made.lfPitchAndFamily == 0x22);
    }
    // The font that a control gets; null when it is left to the system.
    const auto fontOf = [&](int id) -> HGDIOBJ {
        const HDC device = CreateCompatibleDC(nullptr);
        const LRESULT brush = SendMessageW(window, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(device),
                                           reinterpret_cast<LPARAM>(GetDlgItem(window, id)));
        const bool own = brush == reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_WINDOW));
        EXPECT_EQ(own, GetTextColor(device) == INK); // the hook
        EXPECT_TRUE(!own || GetBkMode(device) == TRANSPARENT);
        const HGDIOBJ font = own ? GetCurrentObject(device, OBJ_FONT) : nullptr;
        DeleteDC(device);
        return font;
    };
    EXPECT_EQ(fontOf(HEADER_TITLE), fonts.arial12);
    EXPECT_EQ(fontOf(HEADER_ICON), GetStockObject(SYSTEM_FONT)); // in the band, but neither text nor title
    EXPECT_EQ(fontOf(HEADER_TEXT), fonts.shell8);
    dialog.colours.largeText = 1;
    EXPECT_EQ(fontOf(HEADER_TEXT), fonts.shell10);
    SetWindowLongW(GetDlgItem(window, HEADER_ICON), GWLP_ID, 0); // which names no control
    dialog.colours.titleId = dialog.colours.textId = 0;
    EXPECT_EQ(fontOf(0), GetStockObject(SYSTEM_FONT));
    for (const LONG top : {BAND - 1, BAND}) {
        SetWindowPos(GetDlgItem(window, BODY_TEXT), nullptr, 5, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
        EXPECT_EQ(fontOf(BODY_TEXT) != nullptr, top < BAND);
    }
    dialog.colours.enabled = 0;
    EXPECT_EQ(fontOf(HEADER_TITLE), nullptr);
}

TEST(Colored, OpensWhereItWasAndLaysOutAnew)
{
    for (const int left : {70, 0}) {
        RECT saved = {left, 50, 0, 0};
        auto dialog = std::make_unique<Header>();
        dialog->colours.savedPosition = &saved;
        dialog->colours.titleText = L"Another caption";
        const HWND window = dialog->open(DIALOG_HEADER);
        const RECT own = windowRect(window);
        EXPECT_EQ(own.left == 70 && own.top == 50, left == 70);
        EXPECT_EQ(textOf(window), "Another caption");
        for (const int wider : {0, 90}) {
            SetWindowPos(window, nullptr, 0, 0, own.right - own.left + wider, own.bottom - own.top, SWP_NOMOVE);
            const auto [icon, title, text] =
                layoutHeader(clientRect(window).right, BAND, screenDpi(), GetSystemMetrics(SM_CXICON), false);
            for (const auto& [id, box] : {std::pair(HEADER_ICON, icon), {HEADER_TITLE, title}, {HEADER_TEXT, text}}) {
                RECT place = windowRect(GetDlgItem(window, id));
                MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&place), 2);
                const RECT expected = {box.left, box.top, box.left + box.width, box.top + box.height};
                EXPECT_TRUE(EqualRect(&place, &expected)) << id;
            }
        }
        const RECT last = windowRect(window);
        dialog.reset();
        EXPECT_TRUE(EqualRect(&saved, &last));
    }
}

} // namespace
} // namespace toolbelt::test
