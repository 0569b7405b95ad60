#include "Includes/stringFuncs/wcs.h"

#include "Includes/stringFuncs/conversion.h"
#include "Includes/stringFuncs/file_name.h"
#include "Includes/stringFuncs/formatter.h"

namespace toolbelt {
namespace {

constexpr std::int32_t formatSize = 4090;
constexpr std::int32_t formatInPlaceSize = 4096;

// Formats into a buffer of its own, so that the arguments may lie in any string. False when memory has run out.
bool formatText(TextBuffer<wchar_t>& result, std::int32_t size, const wchar_t* format, va_list arguments)
{
    if (result.setLength(size) == 0) return false;
    formatWideV(result.text(), result.capacity(), format, arguments);
    result.fixLength();
    return true;
}

} // namespace

cWCS::~cWCS() = default;

std::int32_t cWCS::Append(const wchar_t* source, std::int32_t count)
{
    return buffer_.append(source, count);
}

std::int32_t cWCS::SetLength(std::int32_t n)
{
    return buffer_.setLength(n);
}

void cWCS::FixLength()
{
    buffer_.fixLength();
}

std::int32_t cWCS::Assign(const wchar_t* source, std::int32_t count)
{
    return buffer_.assign(source, count);
}

void cWCS::AssignMultibyte(const char* bytes, std::int32_t byteCount, std::int32_t codePage)
{
    convertInto(buffer_, bytes, byteCount,
                [codePage](const char* source, std::int32_t length, wchar_t* out, std::int32_t capacity) {
                    return multibyteToWide(codePage, source, length, out, capacity);
                });
}

const wchar_t* cWCS::Format(const wchar_t* format, ...)
{
    TextBuffer<wchar_t> work;
    va_list arguments;
    va_start(arguments, format);
    const bool formatted = formatText(work, formatSize, format, arguments);
    va_end(arguments);
    if (!formatted) return L"<NULL>";
    buffer_.swap(work);
    return buffer_.text();
}

const wchar_t* cWCS::AppendFormat(const wchar_t* format, ...)
{
    TextBuffer<wchar_t> work;
    va_list arguments;
    va_start(arguments, format);
    const bool formatted = formatText(work, formatSize, format, arguments);
    va_end(arguments);
    if (!formatted || buffer_.append(work.text(), work.length()) == 0) return L"<NULL>";
    return buffer_.text();
}

void cWCS::swap(cWCS& other) noexcept
{
    buffer_.swap(other.buffer_);
}

cWCStr::cWCStr(const wchar_t* source, std::int32_t count)
{
    Append(source, count);
}

cWCStr::~cWCStr() = default;

const wchar_t* cWCStr::FormatV(const wchar_t* format, va_list arguments)
{
    TextBuffer<wchar_t> work;
    if (!formatText(work, formatInPlaceSize, format, arguments)) return L"cWCStr::SetLength( 4096 ) returns <NULL>";
    buffer_.swap(work);
    return buffer_.text();
}

cWCSF::cWCSF(const wchar_t* source, std::int32_t count)
{
    Append(source, count);
}

cWCSF::~cWCSF() = default;

cWCSFromMbs::cWCSFromMbs(const char* source, std::uint8_t makeFileNameSafe)
{
    AssignMultibyte(source);
    if (makeFileNameSafe) MakeFileNameSafe(text());
}

cWCSFromMbs::~cWCSFromMbs() = default;

} // namespace toolbelt
