// The operating system in one line, for error reports.
#pragma once

#include "Includes/stringFuncs/conversion.h"
#include "Includes/stringFuncs/wcs.h"
#include "crypto/base/export.h"

namespace toolbelt {

// "OS: PlatformId 2, Major 10, Minor 0, Build 19045 ", the same text, at the same place, on every call. "<NULL>" when
// memory has run out.
TB_API const wchar_t* SystemDescription() noexcept;

// That line for a version record: the platform in hexadecimal, a blank at the end.
const wchar_t* describeSystem(cWCS& text, const VersionRecord& version) noexcept;

} // namespace toolbelt
