// Dialog templates in memory, classic and extended, as a module's resources hold them. Works on bytes alone.
//
// Both kinds begin with a fixed part; menu, class, title and font follow, then the controls, each at a multiple of four
// bytes. An extended template has 0xFFFF in its second 16-bit word, where a classic one has the upper half of its
// style.
#pragma once

#include <cstddef>
#include <cstdint>

namespace toolbelt {

inline constexpr std::uint32_t TEMPLATE_RIGHT_TO_LEFT = 0x400000; // the extended style's layout bit
inline constexpr std::size_t LARGEST_TEMPLATE = 0x100000;         // bytes; more than any dialog needs

// How many bytes the system may read of a template of size bytes, when zeros follow it; 0 when it is cut off or larger
// than the largest. The system reads a template without knowing its size, so such a one must never be given to it.
//
// In a classic template the count of a control's data counts itself for some writers and readers, and for others not.
// Whole is a template that ends within size in one of these ways; the result is more than size when the other way leads
// beyond, by 2 MiB at most.
std::size_t templateExtent(const std::uint8_t* bytes, std::size_t size) noexcept;
// Sets the right-to-left layout bit in the extended style. False, and nothing changed, when the fixed part is cut off.
bool setTemplateRightToLeft(std::uint8_t* bytes, std::size_t size) noexcept;

} // namespace toolbelt
