// The strings and numbers of a JSON text in their order, read from the text itself.
//
// json-parser says whether a text is well-formed and how its values nest. Its numbers are sums of rounded parts, and
// its surrogate pairs lose a bit in half of the planes: what a document says is read again from its text, in step with
// json-parser's tree.
#pragma once

#include <cstdint>

namespace toolbelt {

struct JsonToken
{
    const char* start = nullptr; // of a string, behind its quote
    std::uint32_t length = 0;
    std::uint32_t line = 0;
    bool isString = false;
};

// Over a text that was found well-formed.
class JsonSource
{
public:
    JsonSource(const char* text, std::uint32_t length) : at_(text), end_(text + length) {}
    // The next string or number; false when there is none, a zero byte outside of strings being the end.
    bool next(JsonToken& token);

private:
    const char* at_;
    const char* end_;
    std::uint32_t line_ = 1;
};

// Writes the characters that a string stands for, in UTF-8, to out; \u0000 is a zero byte, a backslash in front of any
// other character stands for that character. False when it holds a lone surrogate, which UTF-8 cannot, is malformed, or
// needs more than capacity bytes, and then *length means nothing.
bool jsonUnescape(char* out, std::uint32_t capacity, std::uint32_t* length, const JsonToken& string);

} // namespace toolbelt
