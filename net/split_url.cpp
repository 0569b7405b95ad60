#include "net/split_url.h"

#include <thread>

namespace toolbelt {
namespace {

// Whether the text begins with the prefix, which is in lower case. Only ASCII letters have a case here.
bool beginsWith(const wchar_t* text, const char* prefix)
{
    for (; *prefix != 0; ++prefix, ++text) {
        const wchar_t unit = *text >= L'A' && *text <= L'Z' ? static_cast<wchar_t>(*text + ('a' - 'A')) : *text;
        if (unit != static_cast<wchar_t>(*prefix)) return false;
    }
    return true;
}

wchar_t* find(wchar_t* text, wchar_t unit)
{
    for (; *text != 0; ++text)
        if (*text == unit) return text;
    return nullptr;
}

// As the C library's conversion of a text to a 32-bit integer.
std::int32_t decimalValue(const wchar_t* text)
{
    while (*text == L' ' || (*text >= L'\t' && *text <= L'\r')) ++text;
    const bool negative = *text == L'-';
    if (negative || *text == L'+') ++text;
    std::int64_t value = 0;
    for (; *text >= L'0' && *text <= L'9'; ++text) {
        value = value * 10 + (*text - L'0'); // below 2^35: the value was at most 2^31
        if (value > INT32_MAX) value = std::int64_t{INT32_MAX} + negative;
    }
    return static_cast<std::int32_t>(negative ? -value : value);
}

} // namespace

bool splitUrl(UrlParts& parts, const wchar_t* url) noexcept
{
    cWCS copy;
    const bool copied = copy.Append(url) != 0;
    parts.text.swap(copy); // the earlier copy lives to the end: the URL may lie in it
    parts.host = parts.path = nullptr;
    parts.port = 0;
    parts.secure = 0;
    std::this_thread::yield(); // on Windows a zero-length sleep
    if (!copied) return false;

    wchar_t* rest = parts.text.text();
    while (*rest == L' ' || *rest == L'\t') ++rest;
    if (beginsWith(rest, "https://")) {
        parts.secure = 1;
        rest += 8;
    } else if (beginsWith(rest, "http://")) {
        rest += 7;
    } else {
        return false;
    }
    parts.host = rest;
    const wchar_t* portText = L"";
    if (wchar_t* colon = find(rest, L':')) {
        *colon = 0;
        portText = rest = colon + 1;
    }
    if (wchar_t* slash = find(rest, L'/')) {
        *slash = 0;
        parts.path = slash + 1;
    }
    parts.port = static_cast<std::uint32_t>(decimalValue(portText));
    return true;
}

} // namespace toolbelt
