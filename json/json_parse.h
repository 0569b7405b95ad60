// Parsing JSON text into trees, by json-parser. Builds without its sources lack this.
#pragma once

#include <cstdint>

#include "json/json_value.h"

namespace toolbelt {

constexpr std::uint32_t JSON_ERROR_SIZE = 128;

// The tree of a text of length bytes, UTF-8 with or without a byte order mark; every flag is clear. Null on failure,
// and then error, when it is not null, takes the reason: json-parser's own message as it is, "LINE:COLUMN: ..." as a
// rule (this version of it counts no columns), "Memory allocation failure" when memory ran out.
//
// Read as json-parser reads: a comma before a closing bracket, any character behind a backslash and control characters
// in strings are let pass, and reading ends at a zero byte behind the document. Bytes are not checked for being UTF-8.
// An integer that 64 bits do not hold becomes the nearest double, and so does -0. Refused beyond that, in messages of
// the same form: a number too large for a double, a minus sign without a digit, a lone surrogate.
TB_API JsonValue* jsonParse(const char* text, std::uint32_t length, char (*error)[JSON_ERROR_SIZE] = nullptr) noexcept;

} // namespace toolbelt
