// Texts of 16-bit units in the form that GoogleTest compares and prints; it takes wchar_t for the platform's own. And
// what the library says when something is wrong.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <string>
#include <vector>

#include "Includes/stringFuncs/diagnostics.h"
#include "Includes/stringFuncs/wcs.h"

namespace toolbelt::test {

inline std::u16string units(const wchar_t* text, std::int32_t length = -1)
{
    std::u16string result;
    for (std::int32_t i = 0; text && (length < 0 ? text[i] != 0 : i < length); ++i)
        result += static_cast<char16_t>(text[i]);
    return result;
}
inline std::u16string units(const cWCS& text)
{
    return units(text.text(), text.length());
}
inline const wchar_t* wide(const std::u16string& text)
{
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

inline const wchar_t* formatV(cWCStr& text, const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const wchar_t* result = text.FormatV(format, arguments);
    va_end(arguments);
    return result;
}

// Records what goes to the debug channel; both diagnostics are the default ones again afterwards.
struct Recorder
{
    static inline std::vector<std::u16string> lines;
    Recorder()
    {
        lines.clear();
        setDebugChannel([](const wchar_t* message) { lines.push_back(units(message)); });
    }
    ~Recorder()
    {
        setDebugChannel(nullptr);
        setAssertionReport(nullptr);
    }
};
// The lines of so many failed allocations.
inline std::vector<std::u16string> outOfMemory(std::size_t count)
{
    return std::vector<std::u16string>(count, u"Assertion! Error in memory allocation!");
}

} // namespace toolbelt::test
