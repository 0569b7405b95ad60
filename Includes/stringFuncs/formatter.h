// The bounded printf-style formatter for wide text. It writes into the caller's buffer, never past its capacity
// (terminator included), allocates nothing itself and depends on no locale: but for the code page of multibyte text and
// the width of a pointer, every system gives the same text.
//
// A directive is % flags width . precision size letter, of at most 100 units:
//   flags      - + blank # 0, in any order. Width and precision: digits or * (a negative * width means -, a negative *
//              precision none). Both may be of any size: what lies behind the buffer's end is cut, be it between the
//              halves of a surrogate pair.
//   size       I64 (8-byte integer), I32, I, l (4 bytes), h (2 bytes), tried in this order; one at most.
//   d i u o x X  integers. e E f g G: a double, rounded correctly at any precision; two exponent digits or three, "inf"
//              and "nan" (upper case with E and G).
//   s S c C    s is wide text and S multibyte text in the default code page; c and C likewise for one unit. The size l
//              makes each of them wide and h narrow. The precision counts the units written; a character that does not
//              fit it whole is left out of S. A null text is "<Null>".
//   p          "0x" and the address in upper case hexadecimal at full width.
//   n          takes its argument, a pointer, and writes nothing, neither text nor through the pointer.
//   %%         a percent sign.
// Another letter gives "'Invalid value'" and takes no argument; a directive that is too long gives it in place of
// its value. A percent sign with no letter behind it (at the end, or as in "5%, then") stands for itself.
#pragma once

#include <cstdarg>
#include <cstdint>

namespace toolbelt {

// Returns the units written before the terminator, at most capacity - 1. Without a buffer or a capacity nothing is
// written; a null format is an empty text. Arguments must not lie in the buffer.
std::int32_t formatWide(wchar_t* buffer, std::int32_t capacity, const wchar_t* format, ...) noexcept;
std::int32_t formatWideV(wchar_t* buffer, std::int32_t capacity, const wchar_t* format, va_list arguments) noexcept;

} // namespace toolbelt
