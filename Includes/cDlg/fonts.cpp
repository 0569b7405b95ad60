#include "Includes/cDlg/fonts.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "Includes/system/process_end.h"
#include "Includes/system/static_object.h"

namespace toolbelt {
namespace {

static_assert(sizeof(cFonts) == 3 * sizeof(void*));

constexpr std::int32_t USUAL_DPI = 96;

void ensureFont(FontHandle& font, const wchar_t* face, int points, int dpi)
{
    if (font) return;
    font = CreateFontW(-MulDiv(points, dpi, POINTS_PER_INCH), 0, 0, 0, FW_BOLD, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                       OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, VARIABLE_PITCH | FF_SWISS, face);
}

class FontOwner
{
public:
    FontOwner() = default;
    FontOwner(const FontOwner&) = delete;
    FontOwner& operator=(const FontOwner&) = delete;
    ~FontOwner()
    {
        if (processIsEnding()) return;
        for (const FontHandle font : {fonts_.shell10, fonts_.arial12, fonts_.shell8})
            if (font) DeleteObject(font);
    }

    cFonts get()
    {
        if (fonts_.shell10 && fonts_.arial12 && fonts_.shell8) return fonts_;
        const int dpi = screenDpi();
        ensureFont(fonts_.shell10, L"MS Shell Dlg", 10, dpi);
        ensureFont(fonts_.arial12, L"ARIAL", 12, dpi);
        ensureFont(fonts_.shell8, L"MS Shell Dlg", 8, dpi);
        return fonts_;
    }

private:
    cFonts fonts_;
};

} // namespace

cFonts sharedFonts() noexcept
{
    FontOwner& owner = cStaticObjectCS<FontOwner>::getStatic(L"cFonts::getStatic");
    const TracedEntry entry(cStaticObjectCS<FontOwner>::lock(), L"cFonts::get");
    return owner.get();
}

std::int32_t screenDpi() noexcept
{
    const HDC screen = GetDC(nullptr);
    if (!screen) return USUAL_DPI;
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return dpi > 0 ? dpi : USUAL_DPI;
}

} // namespace toolbelt
