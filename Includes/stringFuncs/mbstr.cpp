#include "Includes/stringFuncs/mbstr.h"

#include "Includes/stringFuncs/conversion.h"

namespace toolbelt {

cMBStr::~cMBStr() = default;

std::int32_t cMBStr::Append(const char* source, std::int32_t count)
{
    return buffer_.append(source, count);
}

std::int32_t cMBStr::SetLength(std::int32_t n)
{
    return buffer_.setLength(n);
}

void cMBStr::FixLength()
{
    buffer_.fixLength();
}

std::int32_t cMBStr::Assign(const char* source, std::int32_t count)
{
    return buffer_.assign(source, count);
}

void cMBStr::AssignWide(const wchar_t* source, std::int32_t count, std::int32_t codePage)
{
    convertInto(buffer_, source, count,
                [codePage](const wchar_t* units, std::int32_t length, char* out, std::int32_t capacity) {
                    return wideToMultibyte(codePage, units, length, out, capacity);
                });
}

} // namespace toolbelt
