// Texts of 16-bit units in the form that GoogleTest compares and prints; it takes wchar_t for the platform's own.
#pragma once

#include <cstdint>
#include <string>

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

} // namespace toolbelt::test
