// Mail links ("mailto:ADDRESS?subject=TEXT&body=TEXT"), and their form with a file: "...&attach=PATH" at the end.
#pragma once

#include <cstdint>

#include "Includes/stringFuncs/wcs.h"
#include "crypto/base/export.h"

namespace toolbelt {

inline constexpr std::int32_t SHELL_DONE = 33; // the shell's results above 32 are success

// Opens the link through the shell, which starts the user's mail program. A link with a file is sent through the
// system's mail interface instead (mapi_mail.h), which the shell's links cannot do. The first "&attach=" counts,
// wherever it stands; a text that is to hold it has "&" escaped. Returns the shell's result, or the mail interface's
// with SHELL_DONE for its 0.
TB_API std::int32_t OpenMailLink(void* window, const wchar_t* link) noexcept;

struct MailLink
{
    cWCS recipient;  // behind "mailto:" up to "?" or "&attach=", whichever comes first
    cWCS subject;    // behind "?subject=" up to "&", decoded
    cWCS body;       // behind "&body=" up to "&", decoded
    cWCS attachment; // behind "&attach=" to the end, not decoded: "&" and "%" are part of a path
};
bool hasAttachment(const wchar_t* link) noexcept;
// Parts that the link does not have are empty. False when memory has run out.
bool splitMailLink(MailLink& parts, const wchar_t* link) noexcept;

} // namespace toolbelt
