// The JSON writer: a tree as indented text with CR LF line ends, appended to a wide string.
//
// Hidden members leave nothing, blank values an empty value of their type. Every character is written as it is but for
// six that get a backslash: control characters, form feed and zero included, come out raw, so that the text of a string
// that holds them is not strict JSON. A double that is not finite is written as null. A value of an unknown type leaves
// "<error>" and the walk goes on.
#pragma once

#include <cstdint>

#include "Includes/stringFuncs/wcs.h"
#include "json/json_value.h"

namespace toolbelt {

// Longest text in units that a string may have after jsonWrite: 1 GiB of memory.
constexpr std::uint32_t JSON_TEXT_LIMIT = (1u << 29) - 1;
// From this level on nothing is indented, and no lines are begun.
constexpr std::uint32_t JSON_LEVEL_LIMIT = 65536;

// Appends the text of value, whose lines are indented as those of that level (0: the root of a document). The text is
// measured first and its room reserved at once; one that would pass the limit is refused before anything is allocated
// for it. A null pointer in place of a child leaves what type 0 leaves: nothing. True when something valid was written;
// false for null, type 0 and unknown types ("<error>" is appended), and, with out as it was, when the limit would be
// passed or memory runs out. A false that concerns a value within an object or array is not passed up. Trees of any
// depth take no stack.
TB_API bool jsonWrite(std::uint32_t level, cWCS& out, const JsonValue* value);

// What the writer is made of. The text, which may lie within out, has count units (-1: up to the zero unit); null is an
// empty one. False, or null, tells that
// memory ran out, and out is as it was.
TB_API bool jsonAppendText(const wchar_t* text, cWCS& out, bool quoted, bool escaped, std::int32_t count = -1);
// The escaped form, built in scratch, which must not hold the text.
TB_API const wchar_t* jsonEscape(cWCS& scratch, const wchar_t* text, std::int32_t count = -1);
// CR LF and two blanks a level; nothing at all from JSON_LEVEL_LIMIT on.
TB_API bool jsonNewLine(std::uint32_t level, cWCS& out);

} // namespace toolbelt
