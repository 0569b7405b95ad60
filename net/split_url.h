// A URL cut into what a connection needs: host, port, path and whether it is secure.
#pragma once

#include <cstdint>

#include "Includes/stringFuncs/wcs.h"
#include "crypto/base/export.h"

namespace toolbelt {

// UrlParts holds a copy of the URL, cut into pieces in place; the pieces live as long as it does. It is as splitUrl
// left it: after a failure there is no host.
struct UrlParts
{
    cWCS text;
    const wchar_t* host = nullptr;
    const wchar_t* path = nullptr; // behind the first "/" after the host, that "/" left out; null without one
    std::uint32_t port = 0;        // 0: the URL gives none
    std::uint8_t secure = 0;       // 1 for https, 0 for http
};

// splitUrl splits a zero-terminated URL, which may be one of the parts' own pieces. Blanks and TABs in front are
// skipped; "http://" and "https://" are known in upper and lower case; false without them, or when memory runs out.
//
// Behind the scheme the first ":" ends the host, wherever it stands: "http://h/a:8" is the host "h/a" and the port 8.
// So there are no user names and no IPv6 addresses. The port is read as the C library reads a decimal number: blanks, a
// sign, digits up to the first other character, 0 without any. It is held between -2^31 and 2^31 - 1, negative ones
// modulo 2^32; whether such a port exists is for the connection to say.
[[nodiscard]] TB_API bool splitUrl(UrlParts& parts, const wchar_t* url) noexcept;

} // namespace toolbelt
