// cMBStr: the owner of 8-bit text, with the growth and wiping rules of the wide strings (wcs.h), counted in bytes.
#pragma once

#include <cstdint>

#include "Includes/stringFuncs/text_buffer.h"
#include "crypto/base/export.h"

namespace toolbelt {

class TB_API cMBStr
{
public:
    cMBStr() noexcept = default;
    cMBStr(const cMBStr&) = delete;
    cMBStr& operator=(const cMBStr&) = delete;
    ~cMBStr();

    // Null for a string that was never filled, else zero-terminated at length().
    const char* text() const { return buffer_.text(); }
    char* text() { return buffer_.text(); }
    std::int32_t capacity() const { return buffer_.capacity(); }
    std::int32_t length() const { return buffer_.length(); }

    // As the operations of cWCS.
    std::int32_t Append(const char* source, std::int32_t count = -1);
    std::int32_t SetLength(std::int32_t n);
    void FixLength();
    std::int32_t Assign(const char* source, std::int32_t count = -1);
    // Replaces the content by wide text converted to a code page (-1: DefaultCodePage; count negative: up to the
    // terminator). A null source with a negative count changes nothing; when memory runs out the object is left empty.
    void AssignWide(const wchar_t* source, std::int32_t count = -1, std::int32_t codePage = -1);
    void swap(cMBStr& other) noexcept { buffer_.swap(other.buffer_); }

private:
    TextBuffer<char> buffer_;
};

} // namespace toolbelt
