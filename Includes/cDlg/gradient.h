// The two-colour shading of dialog headers. The system's function for it is bound when it is needed, since old systems
// lack it.
#pragma once

#include "Includes/cDlg/window_types.h"
#include "crypto/base/export.h"

namespace toolbelt {

class CSysDll;

// Fills the rectangle: colour a glows from the top left corner and fades into b towards the other three. Equal colours
// are a solid fill, for which no library is needed. False when nothing could be drawn: the caller paints flat.
TB_API bool Gradient(Colour a, const Rectangle& rectangle, DeviceHandle device, Colour b) noexcept;

// The process-wide wrapper of "Msimg32.dll", which a program that paints a lot may set; it must stay until it is taken
// out. Null, as from the start: the library is loaded for each shading. Returns the one before.
TB_API CSysDll* setImageLibrary(CSysDll* library) noexcept;

} // namespace toolbelt
