// The version text in a module's version resource.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"

namespace toolbelt {

// Finds "FileVersion" in a version resource block (as GetFileVersionInfo gives it) under the first of its translations
// that has one. *value points into the block and *length counts its units, terminator included; both are cleared first.
// True when a value was found and its length is at most maximum; a longer one gives false, and is told all the same.
TB_API bool QueryFileVersion(const void* block, const wchar_t** value, std::uint32_t* length,
                             std::uint32_t maximum) noexcept;

} // namespace toolbelt
