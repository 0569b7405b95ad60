#include "Includes/system/percent_encode.h"

#include <cstdint>

#include "Includes/stringFuncs/conversion.h"
#include "crypto/base/heap.h"

namespace toolbelt {
namespace {

constexpr wchar_t DIGITS[] = L"0123456789ABCDEF";
constexpr wchar_t REPLACEMENT = 0xFFFD; // what the conversion makes of malformed input

bool isPlain(wchar_t unit)
{
    return (unit >= L'0' && unit <= L'9') || (unit >= L'a' && unit <= L'z') || (unit >= L'A' && unit <= L'Z') ||
           unit == L'-' || unit == L'%';
}

int digitValue(wchar_t unit)
{
    if (unit >= L'0' && unit <= L'9') return unit - L'0';
    if (unit >= L'a' && unit <= L'f') return unit - L'a' + 10;
    if (unit >= L'A' && unit <= L'F') return unit - L'A' + 10;
    return -1;
}

// The byte of the escape at the place, or -1. Reads no further than the terminator.
int escapedByte(const wchar_t* at)
{
    if (at[0] != L'%') return -1;
    const int high = digitValue(at[1]);
    const int low = high < 0 ? -1 : digitValue(at[2]);
    return low < 0 ? -1 : high * 16 + low;
}

// One character of UTF-8: the bytes that its first byte announces.
int bytesAnnounced(int first)
{
    return first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 0;
}

} // namespace

bool PercentEncode(const wchar_t* text, cWCS& target) noexcept
{
    std::int64_t length = 0;
    for (const wchar_t* from = text; from && *from; ++from) length += isPlain(*from) ? 1 : 3;
    cWCS escaped; // first, as the text may lie in the target
    if (length == 0 || length > INT32_MAX || !escaped.SetLength(static_cast<std::int32_t>(length))) return true;
    for (wchar_t* to = escaped.text(); *text; ++text) {
        if (isPlain(*text)) {
            *to++ = *text;
        } else {
            *to++ = L'%';
            *to++ = DIGITS[*text >> 4 & 15];
            *to++ = DIGITS[*text & 15];
        }
    }
    target.Append(escaped.text(), escaped.length());
    return true;
}

void percentDecode(cWCS& text) noexcept
{
    wchar_t* const start = text.text();
    if (!start) return;
    wchar_t* to = start;
    for (const wchar_t* from = start; *from;) {
        const int first = escapedByte(from);
        if (first < 0) {
            *to++ = *from++;
            continue;
        }
        char bytes[4] = {};
        wchar_t units[2];
        const WipeOnExit guardBytes(bytes);
        const WipeOnExit guardUnits(units);
        const int announced = bytesAnnounced(first);
        int count = 0;
        for (; count < announced; ++count) {
            const int byte = escapedByte(from + 3 * count);
            if (byte < 0) break;
            bytes[count] = static_cast<char>(byte);
        }
        std::int32_t written = 0;
        if (count == announced && count > 1) written = multibyteToWide(codePageUtf8, bytes, count, units, 2);
        const bool isWanted = first == 0xEF && bytes[1] == '\xBF' && bytes[2] == '\xBD'; // escaped itself
        const bool isCharacter =
            written == 1 ? units[0] != REPLACEMENT || isWanted : written == 2 && (units[0] & 0xF800) == 0xD800;
        if (isCharacter) {
            for (std::int32_t i = 0; i < written; ++i) *to++ = units[i];
            from += 3 * count;
        } else {
            *to++ = static_cast<wchar_t>(first);
            from += 3;
        }
    }
    *to = 0;
    text.FixLength();
}

} // namespace toolbelt
