// Building and freeing trees. An array of members or elements has room for the power of two at or above its count, so a
// record needs no field for it.
#include "json/json_value.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace toolbelt {
namespace {

constexpr std::uint32_t SMALLEST_ROOM = 4;
// Blocks stay below 2 GiB.
constexpr std::uint32_t MAX_CHILDREN = 1u << 27;

std::uint32_t roomFor(std::uint32_t count)
{
    return std::max(SMALLEST_ROOM, std::bit_ceil(count));
}

// Makes room for one more item; the room behind the count is always zero.
template <typename Item>
bool grow(Item*& items, std::uint32_t count)
{
    if (items && count != roomFor(count)) return true;
    if (count >= MAX_CHILDREN) return false;
    const std::uint32_t room = roomFor(count + 1);
    auto* grown = static_cast<Item*>(heap::allocate(room * sizeof(Item)));
    if (!grown) return false;
    std::fill_n(grown, room, Item{});
    if (items) {
        std::copy_n(items, count, grown);
        heap::releaseSecret(items, count * sizeof(Item));
    }
    items = grown;
    return true;
}

std::uint32_t lengthOf(const char* characters, std::int32_t length)
{
    if (length >= 0) return static_cast<std::uint32_t>(length);
    return characters ? static_cast<std::uint32_t>(std::strlen(characters)) : 0;
}

char* copyText(const char* characters, std::uint32_t length)
{
    auto* copy = static_cast<char*>(heap::allocate(std::size_t(length) + 1));
    if (!copy) return nullptr;
    std::copy_n(characters, length, copy);
    copy[length] = 0;
    return copy;
}

void freeText(char* characters, std::uint32_t length)
{
    heap::releaseSecret(characters, std::size_t(length) + 1);
}

// The last child, taken out of its container; null when there is none. Null pointers are no children.
JsonValue* takeLastChild(JsonValue& value)
{
    JsonValue* child = nullptr;
    while (!child && value.type == JSON_ARRAY && value.array.count > 0)
        child = std::exchange(value.array.elements[--value.array.count], nullptr);
    while (!child && value.type == JSON_OBJECT && value.object.count > 0) {
        JsonMember& last = value.object.members[--value.object.count];
        freeText(last.name, last.nameLength);
        child = std::exchange(last, JsonMember{}).value;
    }
    return child;
}

// A value that has no children any more. Only the items that were ever there need wiping, and all were taken out.
void freeSingle(JsonValue* value)
{
    if (value->type == JSON_OBJECT) heap::releaseSecret(value->object.members, SMALLEST_ROOM * sizeof(JsonMember));
    if (value->type == JSON_ARRAY) heap::releaseSecret(value->array.elements, SMALLEST_ROOM * sizeof(JsonValue*));
    if (value->type == JSON_STRING) freeText(value->string.characters, value->string.length);
    heap::releaseSecret(value, sizeof *value);
}

} // namespace

void jsonFree(JsonValue* root) noexcept
{
    if (!root) return;
    root->parent = nullptr;
    for (JsonValue* value = root; value;) {
        if (JsonValue* child = takeLastChild(*value)) {
            value = child;
        } else {
            JsonValue* parent = value->parent;
            freeSingle(value);
            value = parent;
        }
    }
}

JsonValue* jsonNew(JsonType type) noexcept
{
    if (type == JSON_STRING) return jsonNewString("", 0);
    void* block = heap::allocate(sizeof(JsonValue));
    if (!block) return nullptr;
    auto* value = new (block) JsonValue;
    value->type = type;
    if (type == JSON_OBJECT) value->object = {};
    if (type == JSON_ARRAY) value->array = {};
    if (type == JSON_DOUBLE) value->number = 0;
    if (type == JSON_BOOLEAN) value->boolean = 0;
    return value;
}

JsonValue* jsonNewInteger(std::int64_t integer) noexcept
{
    JsonValue* value = jsonNew(JSON_INTEGER);
    if (value) value->integer = integer;
    return value;
}

JsonValue* jsonNewDouble(double number) noexcept
{
    JsonValue* value = jsonNew(JSON_DOUBLE);
    if (value) value->number = number;
    return value;
}

JsonValue* jsonNewBoolean(bool boolean) noexcept
{
    JsonValue* value = jsonNew(JSON_BOOLEAN);
    if (value) value->boolean = boolean;
    return value;
}

JsonValue* jsonNewString(const char* characters, std::int32_t length) noexcept
{
    const std::uint32_t bytes = lengthOf(characters, length);
    char* copy = copyText(characters, bytes);
    JsonValue* value = copy ? jsonNew(JSON_NULL) : nullptr;
    if (!value) {
        if (copy) freeText(copy, bytes);
        return nullptr;
    }
    value->type = JSON_STRING;
    value->string = {bytes, copy};
    return value;
}

bool jsonAddMember(JsonValue& object, const char* name, std::int32_t nameLength, JsonValue* value) noexcept
{
    JsonTree owned(value);
    const std::uint32_t length = lengthOf(name, nameLength);
    if (!value || object.type != JSON_OBJECT || !grow(object.object.members, object.object.count)) return false;
    char* copy = copyText(name, length);
    if (!copy) return false;
    object.object.members[object.object.count++] = {copy, length, owned.release()};
    value->parent = &object;
    return true;
}

bool jsonAddElement(JsonValue& array, JsonValue* value) noexcept
{
    JsonTree owned(value);
    if (!value || array.type != JSON_ARRAY || !grow(array.array.elements, array.array.count)) return false;
    array.array.elements[array.array.count++] = owned.release();
    value->parent = &array;
    return true;
}

JsonValue* jsonFindMember(const JsonValue& object, const char* name, std::int32_t nameLength) noexcept
{
    if (object.type != JSON_OBJECT) return nullptr;
    const std::uint32_t length = lengthOf(name, nameLength);
    for (std::uint32_t i = 0; i < object.object.count; ++i) {
        const JsonMember& member = object.object.members[i];
        if (member.nameLength == length && std::equal(name, name + length, member.name)) return member.value;
    }
    return nullptr;
}

} // namespace toolbelt
