// The tree of a JSON document: the record that the writer reads, and the functions that build and free trees.
//
// Names and strings are 8-bit text of the default code page (UTF-8) with a length, so they may hold zero bytes; a zero
// byte follows what these functions and the parser made. Every block comes from the library's heap and is wiped before
// it goes back there. No function recurses, however deep a tree is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "crypto/base/heap.h"

namespace toolbelt {

// json-parser's numbering.
enum JsonType : std::uint32_t
{
    JSON_NONE,
    JSON_OBJECT,
    JSON_ARRAY,
    JSON_INTEGER,
    JSON_DOUBLE,
    JSON_STRING,
    JSON_BOOLEAN,
    JSON_NULL,
};

enum JsonFlags : std::uint32_t
{
    JSON_HIDDEN = 1, // left out, with its name, when its object or array is written
    JSON_BLANK = 2,  // written as an empty value of its type
};

struct JsonValue;

struct JsonMember
{
    char* name;
    std::uint32_t nameLength;
    JsonValue* value;
};

struct JsonText
{
    std::uint32_t length;
    char* characters;
};
struct JsonMembers
{
    std::uint32_t count;
    JsonMember* members;
};
struct JsonElements
{
    std::uint32_t count;
    JsonValue** elements;
};

struct JsonValue
{
    JsonValue* parent = nullptr; // the containing value, null at the root
    std::uint32_t type = JSON_NONE;
    std::uint32_t flags = 0; // whoever holds the tree may set and clear them
    union alignas(8) {
        std::int64_t integer = 0;
        double number;
        std::int32_t boolean; // non-zero is true
        JsonText string;
        JsonMembers object;
        JsonElements array;
    };
};
static_assert(sizeof(void*) != 4 || (offsetof(JsonValue, type) == 4 && offsetof(JsonValue, flags) == 8 &&
                                     offsetof(JsonValue, integer) == 16 && sizeof(JsonValue) == 24));

// Frees a whole tree that these functions or the parser made. Null is ignored, in place of a child too.
TB_API void jsonFree(JsonValue* root) noexcept;

struct JsonFree
{
    void operator()(JsonValue* root) const noexcept { jsonFree(root); }
};
using JsonTree = std::unique_ptr<JsonValue, JsonFree>;

// A new value without a parent, its flags clear; null when memory has run out. jsonNew makes an object or array without
// children, 0, "", false or null.
TB_API JsonValue* jsonNew(JsonType type) noexcept;
TB_API JsonValue* jsonNewInteger(std::int64_t integer) noexcept;
TB_API JsonValue* jsonNewDouble(double number) noexcept;
TB_API JsonValue* jsonNewBoolean(bool boolean) noexcept;
// Copies length bytes (-1: up to the zero byte).
TB_API JsonValue* jsonNewString(const char* characters, std::int32_t length = -1) noexcept;

// Puts a value that has no parent behind the last member or element of a container that these functions or the parser
// made (its room follows from its count). The value is the container's from then on; on
// failure (no memory, a null value, a container of another type) it is freed and the container stays as it was. A name
// that is there already is not looked for.
TB_API bool jsonAddMember(JsonValue& object, const char* name, std::int32_t nameLength, JsonValue* value) noexcept;
TB_API bool jsonAddElement(JsonValue& array, JsonValue* value) noexcept;

// The first member of that name, or null; null too when the value is no object.
TB_API JsonValue* jsonFindMember(const JsonValue& object, const char* name, std::int32_t nameLength = -1) noexcept;

} // namespace toolbelt
