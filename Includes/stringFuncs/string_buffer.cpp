#include "Includes/stringFuncs/string_buffer.h"

#include <algorithm>
#include <cstring>

#include "Includes/stringFuncs/text_buffer.h"
#include "Includes/stringFuncs/text_units.h"

namespace toolbelt {

bool cStringBuffer::Assign(const wchar_t* text, std::int32_t count)
{
    cWCS copy;
    if (copy.Append(text, count) == 0) return false;
    Swap(copy);
    return true;
}

void cStringBuffer::Swap(cWCS& text)
{
    text_.swap(text);
    Restart();
}

bool cStringBuffer::ReadLine(const wchar_t** line, std::int32_t* length)
{
    const std::int32_t size = text_.length();
    if (position_ >= size) return false;
    const wchar_t* const text = text_.text();
    std::int32_t end = position_;
    while (end < size && text[end] != L'\r' && text[end] != L'\n') ++end;
    *line = text + position_;
    *length = end - position_;
    const bool twoUnits = size - end >= 2 && text[end] == L'\r' && text[end + 1] == L'\n';
    position_ = end < size ? end + (twoUnits ? 2 : 1) : size;
    return true;
}

bool cStringBuffer::Read(wchar_t* destination, std::int32_t size)
{
    const wchar_t* line = nullptr;
    std::int32_t length = 0;
    const bool found = ReadLine(&line, &length);
    if (destination == nullptr || size <= 0) return found;
    const std::int32_t copied = std::min(length, size - 1);
    if (copied > 0) std::memcpy(destination, line, static_cast<std::size_t>(copied) * sizeof(wchar_t));
    std::fill(destination + copied, destination + size, L'\0');
    return found;
}

bool cStringBuffer::FindValue(cWCS& result, const wchar_t* key, bool skipKey)
{
    if (key == nullptr) return false;
    const std::size_t keyLength = textLength(key);
    const wchar_t* line = nullptr;
    std::int32_t length = 0;
    Restart();
    while (ReadLine(&line, &length)) {
        if (static_cast<std::size_t>(length) < keyLength || !equalUnits(line, key, keyLength)) continue;
        const std::int32_t skipped = skipKey ? static_cast<std::int32_t>(keyLength) : 0;
        return result.Assign(line + skipped, length - skipped) != 0;
    }
    return false;
}

} // namespace toolbelt
