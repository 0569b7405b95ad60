#include "Includes/cDlg/gradient.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <atomic>

#include "Includes/system/sys_dll.h"

namespace toolbelt {
namespace {

std::atomic<CSysDll*> imageLibrary = nullptr;

constexpr char FUNCTION[] = "GradientFill";

bool fillSolid(HDC device, const RECT& rectangle, COLORREF colour)
{
    const HBRUSH brush = CreateSolidBrush(colour);
    if (!brush) return false;
    const bool filled = FillRect(device, &rectangle, brush) != 0;
    DeleteObject(brush);
    return filled;
}

TRIVERTEX vertex(LONG x, LONG y, COLORREF colour)
{
    const auto channel = [](BYTE value) { return static_cast<COLOR16>(value << 8); };
    return {x, y, channel(GetRValue(colour)), channel(GetGValue(colour)), channel(GetBValue(colour)), 0};
}

bool fillTriangles(void* function, HDC device, const RECT& rectangle, COLORREF a, COLORREF b)
{
    TRIVERTEX vertices[] = {vertex(rectangle.left, rectangle.top, a), vertex(rectangle.right, rectangle.top, b),
                            vertex(rectangle.right, rectangle.bottom, b), vertex(rectangle.left, rectangle.bottom, b)};
    GRADIENT_TRIANGLE triangles[] = {{0, 1, 3}, {1, 2, 3}};
    using GradientFillFunction = BOOL(WINAPI*)(HDC, PTRIVERTEX, ULONG, PVOID, ULONG, ULONG);
    return asFunction<GradientFillFunction>(function)(device, vertices, 4, triangles, 2, GRADIENT_FILL_TRIANGLE) != 0;
}

} // namespace

bool Gradient(Colour a, const Rectangle& rectangle, DeviceHandle device, Colour b) noexcept
{
    if (a == b) return fillSolid(device, rectangle, a);
    void* function = nullptr;
    if (CSysDll* const library = imageLibrary) {
        library->GetProcAddress(FUNCTION, 0, &function);
        return function && fillTriangles(function, device, rectangle, a, b);
    }
    CDll library(L"Msimg32.dll", FUNCTION); // stays loaded while it draws
    function = library.getProc();
    return function && fillTriangles(function, device, rectangle, a, b);
}

CSysDll* setImageLibrary(CSysDll* library) noexcept
{
    return imageLibrary.exchange(library);
}

} // namespace toolbelt
