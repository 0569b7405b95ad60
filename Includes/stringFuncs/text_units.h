// Runs of units. The C library's wide functions serve only where its wchar_t has 16 bits; these serve in every build.
#pragma once

#include <cstddef>
#include <cstdint>

namespace toolbelt {

// Units before the terminator, or the limit when no terminator comes before it; nothing behind the limit is read.
template <typename Unit>
std::size_t lengthWithin(const Unit* text, std::size_t limit) noexcept
{
    std::size_t length = 0;
    while (length < limit && text[length] != 0) ++length;
    return length;
}
template <typename Unit>
std::size_t textLength(const Unit* text) noexcept
{
    return lengthWithin(text, SIZE_MAX);
}

// Whether the first count units are the same. Stops at the first difference: where only one of the two texts is that
// long, nothing behind the terminator of the other is read.
inline bool equalUnits(const wchar_t* a, const wchar_t* b, std::size_t count) noexcept
{
    std::size_t i = 0;
    while (i < count && a[i] == b[i]) ++i;
    return i == count;
}

} // namespace toolbelt
