// Dialog templates in memory, classic and extended, as a module's resources hold them. Works on bytes alone.
//
// Both kinds begin with a fixed part; menu, class, title and font follow, then the controls, each at a multiple of four
// bytes. An extended template has 0xFFFF in its second 16-bit word, where a classic one has the upper half of its
// style.
#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/base/export.h"

namespace toolbelt {

inline constexpr std::uint32_t TEMPLATE_RIGHT_TO_LEFT = 0x400000; // the extended style's layout bit

// Whether the template ends within size bytes. The system reads a template without knowing its size, so one that does
// not must never be given to it.
TB_API bool isWholeTemplate(const std::uint8_t* bytes, std::size_t size) noexcept;
// Sets the right-to-left layout bit in the extended style. False, and nothing changed, when the fixed part is cut off.
TB_API bool setTemplateRightToLeft(std::uint8_t* bytes, std::size_t size) noexcept;

} // namespace toolbelt
