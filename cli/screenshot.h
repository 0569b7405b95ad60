// A picture of a window as it stands on the screen.
#pragma once

#include "cli/files.h"

struct HWND__;

namespace toolbelt::cli {

// The window with its frame, brought up to date first, as the bytes of a BMP file of 24 bits a pixel. Empty when the
// system refuses.
Bytes pictureOf(HWND__* window);

} // namespace toolbelt::cli
