// Percent-encoding of text for mail links, and back.
#pragma once

#include "Includes/stringFuncs/wcs.h"
#include "crypto/base/export.h"

namespace toolbelt {

// Appends the text to the target: ASCII letters, digits, "-" and "%" as they are (texts may hold escapes already),
// every other unit as the escape of its low eight bits alone. Null adds nothing. Always true, also when memory has run
// out: then the target is as it was.
TB_API bool PercentEncode(const wchar_t* text, cWCS& target) noexcept;

// Decodes the escapes of a text in place: those that are a character in UTF-8 give it, any other one gives the
// character of its number. What is no escape stays; the text ends at an escaped zero.
void percentDecode(cWCS& text) noexcept;

} // namespace toolbelt
