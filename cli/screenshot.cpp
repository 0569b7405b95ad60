#include "cli/screenshot.h"

#include <windows.h>

#include <cstring>

namespace toolbelt::cli {
namespace {

constexpr WORD BITS_PER_PIXEL = 24;

struct Picture
{
    Bytes file; // its pixels still missing
    BITMAPINFO info;
    std::uint8_t* pixels;
};

Picture blankPicture(int width, int height)
{
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof info.bmiHeader, width, height, 1, BITS_PER_PIXEL, BI_RGB, 0, 0, 0, 0, 0};
    const std::size_t stride = (static_cast<std::size_t>(width) * BITS_PER_PIXEL / 8 + 3) / 4 * 4;
    BITMAPFILEHEADER file = {};
    file.bfType = 'B' | 'M' << 8;
    file.bfOffBits = sizeof file + sizeof info.bmiHeader;
    Bytes bytes(file.bfOffBits + stride * static_cast<std::size_t>(height));
    file.bfSize = size32(bytes);
    std::memcpy(bytes.data(), &file, sizeof file);
    std::memcpy(bytes.data() + sizeof file, &info.bmiHeader, sizeof info.bmiHeader);
    std::uint8_t* const pixels = bytes.data() + file.bfOffBits;
    return {std::move(bytes), info, pixels};
}

} // namespace

Bytes pictureOf(HWND__* window)
{
    RECT place;
    if (!GetWindowRect(window, &place)) return {};
    RedrawWindow(window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
    const int width = place.right - place.left, height = place.bottom - place.top;
    if (width <= 0 || height <= 0) return {};
    Picture picture = blankPicture(width, height); // may throw: nothing of the system's is held yet
    bool isTaken = false;
    const HDC source = GetWindowDC(window);
    const HDC copy = CreateCompatibleDC(source);
    if (const HBITMAP bitmap = CreateCompatibleBitmap(source, width, height)) {
        const HGDIOBJ before = SelectObject(copy, bitmap);
        const bool copied = BitBlt(copy, 0, 0, width, height, source, 0, 0, SRCCOPY) != FALSE;
        SelectObject(copy, before); // the bitmap is read outside a device
        isTaken = copied && GetDIBits(copy, bitmap, 0, static_cast<UINT>(height), picture.pixels, &picture.info,
                                      DIB_RGB_COLORS) == height;
        DeleteObject(bitmap);
    }
    DeleteDC(copy);
    ReleaseDC(window, source);
    return isTaken ? std::move(picture.file) : Bytes();
}

} // namespace toolbelt::cli
