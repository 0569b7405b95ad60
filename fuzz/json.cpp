// JSON: what is written reads as the same tree again, but for texts that the writer's plain form cannot carry.
#include <cstring>
#include <string>

#include "Includes/stringFuncs/mbstr.h"
#include "fuzz/target.h"
#include "json/json_parse.h"
#include "json/json_write.h"

namespace toolbelt::fuzz {
namespace {

bool same(const JsonValue& a, const JsonValue& b);

bool sameText(const char* a, std::uint32_t sizeOfA, const char* b, std::uint32_t sizeOfB)
{
    return sizeOfA == sizeOfB && std::memcmp(a, b, sizeOfA) == 0;
}

// A double without a fraction is written like an integer, and read as one.
bool sameNumber(const JsonValue& a, const JsonValue& b)
{
    const double left = a.type == JSON_INTEGER ? static_cast<double>(a.integer) : a.number;
    const double right = b.type == JSON_INTEGER ? static_cast<double>(b.integer) : b.number;
    return a.type == JSON_INTEGER && b.type == JSON_INTEGER ? a.integer == b.integer : left == right;
}

bool same(const JsonValue& a, const JsonValue& b)
{
    if (a.type == JSON_INTEGER || a.type == JSON_DOUBLE)
        return (b.type == JSON_INTEGER || b.type == JSON_DOUBLE) && sameNumber(a, b);
    if (a.type != b.type || a.flags != 0 || b.flags != 0) return false;
    switch (a.type) {
    case JSON_OBJECT:
        if (a.object.count != b.object.count) return false;
        for (std::uint32_t i = 0; i < a.object.count; ++i) {
            const JsonMember &left = a.object.members[i], &right = b.object.members[i];
            if (left.value->parent != &a || !sameText(left.name, left.nameLength, right.name, right.nameLength) ||
                !same(*left.value, *right.value))
                return false;
        }
        return true;
    case JSON_ARRAY:
        if (a.array.count != b.array.count) return false;
        for (std::uint32_t i = 0; i < a.array.count; ++i)
            if (!same(*a.array.elements[i], *b.array.elements[i])) return false;
        return true;
    case JSON_STRING:
        return sameText(a.string.characters, a.string.length, b.string.characters, b.string.length);
    default:
        return a.type == JSON_NULL || (a.boolean != 0) == (b.boolean != 0);
    }
}

const Target target("json", [](Input input) {
    const Bytes bytes = input.take(2048);
    char error[JSON_ERROR_SIZE] = {};
    const auto* const document = reinterpret_cast<const char*>(addressOf(bytes));
    const JsonTree tree(jsonParse(document, sizeOf(bytes), &error));
    require((tree != nullptr) == (error[0] == 0), "a tree or a message");
    if (!tree) {
        require(std::memchr(error, 0, sizeof error) != nullptr, "which ends");
        return require(jsonParse(document, sizeOf(bytes)) == nullptr, "nor one when no message is asked for");
    }
    cWCS text;
    require(jsonWrite(0, text, tree.get()), "a tree is written");
    cMBStr written;
    written.AssignWide(text.text(), text.length(), 65001);
    const std::string utf8(written.text(), static_cast<std::size_t>(written.length()));
    // A zero would end the text, and malformed UTF-8 (lone surrogates too) has become U+FFFD.
    if (utf8.find('\0') != utf8.npos || utf8.find("\xEF\xBF\xBD") != utf8.npos) return;
    const Bytes exact(utf8.begin(), utf8.end());
    const JsonTree again(jsonParse(reinterpret_cast<const char*>(exact.data()), sizeOf(exact)));
    require(again && same(*tree, *again), "parse(write(x)) = x");
    cWCS second;
    require(jsonWrite(0, second, again.get()) && second.length() == text.length() &&
                std::memcmp(second.text(), text.text(), sizeof(wchar_t) * std::size_t(text.length())) == 0,
            "write(parse(text)) = text");
});

} // namespace
} // namespace toolbelt::fuzz
