#include "json/json_parse.h"

#include <json.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "json/json_number.h"
#include "json/json_source.h"

namespace toolbelt {
namespace {

static_assert(JSON_ERROR_SIZE == json_error_max && JSON_NULL == std::uint32_t(json_null));

constexpr char NO_MEMORY[] = "Memory allocation failure"; // as json-parser says it

constexpr char OUT_OF_STEP[] = "Unknown error"; // the text and json-parser's tree do not agree

// What json-parser allocates: blocks cut from chunks that grow with the document, and that are wiped and released
// together. Its own releasing is not needed, and would leave out blocks when memory runs out half-way.
class Arena
{
public:
    Arena() = default;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    ~Arena()
    {
        while (last_) {
            Chunk* chunk = last_;
            last_ = chunk->before;
            heap::releaseSecret(chunk, chunk->size);
        }
    }

    void* allocate(std::size_t size) noexcept
    {
        if (size > MAX_BLOCK) return nullptr;
        size = (size + 7) & ~std::size_t(7);
        if (size > left_ && !addChunk(size)) return nullptr;
        std::uint8_t* block = free_;
        free_ += size;
        left_ -= size;
        return block;
    }

private:
    struct alignas(8) Chunk
    {
        Chunk* before;
        std::size_t size;
    };
    static constexpr std::size_t MAX_BLOCK = std::size_t(1) << 30;
    static constexpr std::size_t LARGEST_STEP = 1 << 20;

    bool addChunk(std::size_t size)
    {
        const std::size_t whole = sizeof(Chunk) + std::max(size, step_);
        void* block = heap::allocate(whole);
        if (!block) return false;
        last_ = new (block) Chunk{last_, whole};
        free_ = reinterpret_cast<std::uint8_t*>(last_ + 1);
        left_ = whole - sizeof(Chunk);
        step_ = std::min(2 * step_, LARGEST_STEP);
        return true;
    }

    Chunk* last_ = nullptr;
    std::uint8_t* free_ = nullptr;
    std::size_t left_ = 0;
    std::size_t step_ = 4096;
};

struct Hooks
{
    Arena arena;
    json_value* root = nullptr; // the first block asked for
    bool secondPass = false;
};

// zero is set for values, in json-parser's first pass, and clear for what they hold, in the second.
void* allocateHook(size_t size, int zero, void* userData)
{
    auto& hooks = *static_cast<Hooks*>(userData);
    void* block = hooks.arena.allocate(size);
    if (block && zero) std::memset(block, 0, size);
    if (!hooks.root) hooks.root = static_cast<json_value*>(block);
    // The second pass begins with the root. When it gets no memory there, json-parser frees the children that the root
    // has counted but not got yet.
    if (!block && !zero && !hooks.secondPass) hooks.root->u.array.length = 0;
    hooks.secondPass = hooks.secondPass || !zero;
    return block;
}

void freeHook(void*, void*) {}

// A text that ends one letter short of "true", "false" or "null": json-parser looks at the byte behind it.
bool endsWithinWord(const char* text, std::uint32_t length)
{
    return length > 0 && std::strchr("usl", text[length - 1]) != nullptr && text[length - 1] != 0;
}

bool isContainer(const json_value& value)
{
    return value.type == json_array || value.type == json_object;
}

// Makes our tree out of json-parser's, walking both and the text in step.
class Copy
{
public:
    Copy(const char* text, std::uint32_t length, char (&error)[JSON_ERROR_SIZE]) : source_(text, length), error_(error)
    {}

    JsonValue* run(const json_value* from)
    {
        JsonTree root(makeTree(from));
        JsonToken token;
        return root && source_.next(token) ? fail(OUT_OF_STEP) : root.release();
    }

private:
    JsonTree makeTree(const json_value* from)
    {
        JsonTree root(make(*from));
        // The way down and up again: the children that a container has by now tell where it was left.
        for (JsonValue* to = root.get(); to && isContainer(*from);) {
            const std::uint32_t done = to->type == JSON_OBJECT ? to->object.count : to->array.count;
            if (done == from->u.array.length) {
                if (to == root.get()) break;
                from = from->parent;
                to = to->parent;
                continue;
            }
            const bool object = from->type == json_object;
            const json_value* child = object ? from->u.object.values[done].value : from->u.array.values[done];
            JsonValue* made = object ? addMember(*to, from->u.object.values[done]) : addElement(*to, *child);
            if (!made) return nullptr;
            if (isContainer(*child)) {
                from = child;
                to = made;
            }
        }
        return root;
    }

    JsonValue* fail(const char* message)
    {
        std::snprintf(error_, JSON_ERROR_SIZE, "%s", message);
        return nullptr;
    }
    JsonValue* fail(const JsonToken& token, const char* form)
    {
        std::snprintf(error_, JSON_ERROR_SIZE, form, static_cast<unsigned>(token.line));
        return nullptr;
    }

    JsonValue* addElement(JsonValue& array, const json_value& from)
    {
        JsonValue* made = make(from);
        return !made || jsonAddElement(array, made) ? made : fail(NO_MEMORY);
    }

    JsonValue* addMember(JsonValue& object, const json_object_entry& from)
    {
        JsonTree name(makeString(from.name_length));
        if (!name) return nullptr;
        JsonValue* made = make(*from.value);
        if (!made) return nullptr;
        const JsonText& text = name->string;
        return jsonAddMember(object, text.characters, static_cast<std::int32_t>(text.length), made) ? made
                                                                                                    : fail(NO_MEMORY);
    }

    JsonValue* made(JsonValue* value) { return value ? value : fail(NO_MEMORY); }

    JsonValue* make(const json_value& from)
    {
        if (from.type == json_string) return makeString(from.u.string.length);
        if (from.type == json_integer || from.type == json_double) return makeNumber();
        if (from.type == json_boolean) return made(jsonNewBoolean(from.u.boolean != 0));
        return made(jsonNew(static_cast<JsonType>(from.type)));
    }

    JsonValue* makeNumber()
    {
        JsonToken token;
        if (!source_.next(token) || token.isString) return fail(OUT_OF_STEP);
        JsonTree value(made(jsonNewInteger(0)));
        if (!value) return nullptr;
        switch (jsonReadNumber(*value, token.start, token.length)) {
        case JsonNumberResult::malformed:
            return fail(token, "%u:0: Expected digit after `-`");
        case JsonNumberResult::outOfRange:
            return fail(token, "%u:0: Number out of range");
        default:
            return value.release();
        }
    }

    JsonValue* makeString(std::uint32_t length)
    {
        JsonToken token;
        if (!source_.next(token) || !token.isString) return fail(OUT_OF_STEP);
        // json-parser's bytes have the right count; the text says which they are.
        JsonTree value(made(jsonNewString(token.start, static_cast<std::int32_t>(std::min(length, token.length)))));
        if (!value) return nullptr;
        std::uint32_t used = 0;
        JsonText& string = value->string;
        if (!jsonUnescape(string.characters, string.length, &used, token) || used != length)
            return fail(token, "Invalid character value `u` (at %u:0)");
        return value.release();
    }

    JsonSource source_;
    char (&error_)[JSON_ERROR_SIZE];
};

} // namespace

JsonValue* jsonParse(const char* text, std::uint32_t length, char (*error)[JSON_ERROR_SIZE]) noexcept
{
    char ignored[JSON_ERROR_SIZE];
    char(&message)[JSON_ERROR_SIZE] = error ? *error : ignored;
    message[0] = 0;
    Hooks hooks;
    if (endsWithinWord(text, length)) {
        auto* terminated = static_cast<char*>(hooks.arena.allocate(std::size_t(length) + 1));
        if (!terminated) {
            std::strcpy(message, NO_MEMORY);
            return nullptr;
        }
        std::copy_n(text, length, terminated);
        terminated[length] = 0;
        text = terminated;
    }
    json_settings settings = {};
    settings.mem_alloc = allocateHook;
    settings.mem_free = freeHook;
    settings.user_data = &hooks;
    const json_value* root = json_parse_ex(&settings, text, length, message);
    return root ? Copy(text, length, message).run(root) : nullptr;
}

} // namespace toolbelt
