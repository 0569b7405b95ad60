// Numbers as JSON texts, both ways. A number that is written reads back as the same number, on every system: the digits
// are the fewest that do, and neither direction asks the locale.
#pragma once

#include <cstdint>

#include "json/json_value.h"

namespace toolbelt {

constexpr std::uint32_t JSON_NUMBER_SIZE = 64;

// Writes the number and returns its units; 0 when it cannot be converted. A double has no ".0" (5 is "5") and takes an
// exponent where that is shorter ("1e+20"); one that is not finite is "null", since JSON has no form for it.
std::uint32_t jsonNumberText(wchar_t (&text)[JSON_NUMBER_SIZE], std::int64_t number);
std::uint32_t jsonNumberText(wchar_t (&text)[JSON_NUMBER_SIZE], double number);

enum class JsonNumberResult
{
    ok,
    malformed,
    outOfRange // no double is near it
};
// Reads a JSON number that fills the bytes. One without fraction and exponent becomes an integer where 64 bits hold it,
// any other, -0 among them, the nearest double; one too small for a double is 0.
JsonNumberResult jsonReadNumber(JsonValue& value, const char* text, std::uint32_t length);

} // namespace toolbelt
