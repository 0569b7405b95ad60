// The family of owning UTF-16 strings: cWCS and the classes that differ only in how they are first filled, and cMBStr,
// the owner of 8-bit text. Every buffer that goes back to the heap is overwritten with zeros over its whole capacity
// first.
//
// Counts are 16-bit units (wchar_t is 16 bits wide in every build of these files). Objects are not shared between
// threads. When memory runs out an operation returns 0 (or the text it names), "Assertion! Error in memory allocation!"
// goes to the debug channel, and the object is as it was unless said otherwise.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "Includes/stringFuncs/text_buffer.h"
#include "crypto/base/export.h"

namespace toolbelt {

static_assert(sizeof(wchar_t) == 2, "build with a 16-bit wchar_t (-fshort-wchar outside Windows)");

class TB_API cWCS
{
public:
    cWCS() noexcept = default;
    cWCS(const cWCS&) = delete;
    cWCS& operator=(const cWCS&) = delete;
    // The family's one virtual operation.
    virtual ~cWCS();

    // Null for a string that was never filled, else zero-terminated at length().
    const wchar_t* text() const { return buffer_.text(); }
    wchar_t* text() { return buffer_.text(); }
    std::int32_t capacity() const { return buffer_.capacity(); } // units in the buffer, terminator included
    std::int32_t length() const { return buffer_.length(); }     // units before the terminator

    // Appends count units (negative: up to the terminator); source may lie inside this object. A null source appends
    // count zero units. Returns the units written, terminator included, or 0.
    std::int32_t Append(const wchar_t* source, std::int32_t count = -1);
    // Cuts the text to n units or extends it with zero units. Returns n + 1, or 0 (also for a negative n, which is
    // reported as an assertion).
    std::int32_t SetLength(std::int32_t n);
    // Takes the length from the terminator, after text was written through text(): up to capacity() - 1 units, wherever
    // the text ended before.
    void FixLength();
    // Replaces the content. Returns the units written, terminator included, or 0.
    std::int32_t Assign(const wchar_t* source, std::int32_t count = -1);
    // Replaces the content by converted multibyte text (byteCount -1: up to the zero byte; codePage -1:
    // DefaultCodePage). When memory runs out the object is left empty.
    void AssignMultibyte(const char* bytes, std::int32_t byteCount = -1, std::int32_t codePage = -1);
    // Replaces the content by formatted text (formatter.h), cut to 4095 units (what the working buffer of
    // 4090 units holds); "<NULL>" when memory runs out. An argument may be this object's own text.
    const wchar_t* Format(const wchar_t* format, ...);
    // Appends formatted text, cut likewise; "<NULL>" when memory runs out.
    const wchar_t* AppendFormat(const wchar_t* format, ...);
    // The operating system's description of an error code (0xFFFFFFFF: the thread's last error), then " (0x%X)".
    const wchar_t* SystemErrorText(std::uint32_t code);

    void swap(cWCS& other) noexcept;

protected:
    TextBuffer<wchar_t> buffer_; // text, capacity, length
};

class TB_API cWCStr : public cWCS
{
public:
    explicit cWCStr(const wchar_t* source = nullptr, std::int32_t count = -1);
    ~cWCStr() override;
    // As Format, with a working size of 4096 units, whose buffer holds 6143; the literal
    // "cWCStr::SetLength( 4096 ) returns <NULL>" when memory runs out.
    const wchar_t* FormatV(const wchar_t* format, va_list arguments);
};

class TB_API cWCSF : public cWCS
{
public:
    explicit cWCSF(const wchar_t* source = nullptr, std::int32_t count = -1);
    ~cWCSF() override;
};

class TB_API cWCSFromMbs : public cWCS
{
public:
    // With makeFileNameSafe set the result goes through MakeFileNameSafe.
    explicit cWCSFromMbs(const char* source, std::uint8_t makeFileNameSafe = 0);
    ~cWCSFromMbs() override;
};

} // namespace toolbelt
