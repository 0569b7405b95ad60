// Texts that are to become file names.
#pragma once

#include "crypto/base/export.h"

namespace toolbelt {

// Replaces, in place, what a file name cannot carry: * by x, @ by a, " and ' by Q, \ and ? by $, / by b, : by a full
// stop, < by {, > by }. Nothing else changes: the bar stays, and there is no way back. Null is ignored.
TB_API void MakeFileNameSafe(wchar_t* text) noexcept;

} // namespace toolbelt
