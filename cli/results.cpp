#include "cli/results.h"

#include <new>
#include <optional>
#include <set>

#include "cli/errors.h"
#include "cli/text.h"
#include "json/json_write.h"

namespace toolbelt::cli {
namespace {

bool jsonWanted = false;
std::optional<JsonTree> collected;

JsonTree made(JsonValue* value)
{
    if (!value) throw std::bad_alloc();
    return JsonTree(value);
}

// The writer gives a backslash to those that it escapes.
std::string withoutControls(const std::string& utf8)
{
    std::string text;
    for (const char c : utf8) {
        const bool allowed = static_cast<unsigned char>(c) >= 0x20 || c == '\t' || c == '\r' || c == '\n' || c == '\b';
        if (allowed)
            text += c;
        else
            (text += "\xE2\x90") += static_cast<char>(0x80 + c);
    }
    return text;
}

JsonTree scalar(const Fact& fact)
{
    if (fact.form == Fact::Form::number) return made(jsonNewInteger(std::stoll(fact.value)));
    const std::string text = withoutControls(fact.value);
    return made(jsonNewString(text.data(), static_cast<std::int32_t>(text.size())));
}

void addMember(JsonValue& object, const std::string& name, JsonTree value)
{
    const std::string text = withoutControls(name);
    if (!jsonAddMember(object, text.data(), static_cast<std::int32_t>(text.size()), value.release()))
        throw std::bad_alloc();
}

void addElement(JsonValue& array, JsonTree value)
{
    if (!jsonAddElement(array, value.release())) throw std::bad_alloc();
}

JsonTree toObject(const Fact& fact);

JsonTree toTree(const Fact& fact)
{
    if (fact.form != Fact::Form::list) return fact.parts.empty() ? scalar(fact) : toObject(fact);
    JsonTree array = made(jsonNew(JSON_ARRAY));
    for (const Fact& part : fact.parts) addElement(*array, toTree(part));
    return array;
}

JsonTree toObject(const Fact& fact)
{
    JsonTree object = made(jsonNew(JSON_OBJECT));
    if (!fact.value.empty() || fact.parts.empty()) addMember(*object, fact.name, scalar(fact));
    std::multiset<std::string> names;
    for (const Fact& part : fact.parts) names.insert(part.name);
    for (const Fact& part : fact.parts) {
        if (names.count(part.name) <= 1) {
            addMember(*object, part.name, toTree(part));
        } else {
            const std::string name = withoutControls(part.name);
            JsonValue* list = jsonFindMember(*object, name.data(), static_cast<std::int32_t>(name.size()));
            if (!list) {
                addMember(*object, part.name, made(jsonNew(JSON_ARRAY)));
                list = object->object.members[object->object.count - 1].value;
            }
            addElement(*list, toTree(part));
        }
    }
    return object;
}

void collect(const Fact& fact)
{
    if (!collected) collected = made(jsonNew(JSON_ARRAY));
    addElement(**collected, toObject(fact));
}

} // namespace

void useJson()
{
    jsonWanted = true;
}

bool usesJson()
{
    return jsonWanted;
}

void printResult(const Fact& fact)
{
    if (jsonWanted)
        collect(fact);
    else
        printFact(fact);
}

void printResult(const std::string& line, const Fact& fact)
{
    if (jsonWanted)
        collect(fact);
    else
        printLine(line);
}

void printCollected()
{
    if (collected) printJson(**collected);
}

void printJson(const JsonValue& value)
{
    cWCS text;
    if (!jsonWrite(0, text, &value))
        throw Failure("-", "the document is too long to be written, or memory ran out", EXIT_SYSTEM);
    print(toUtf8({text.text(), static_cast<std::size_t>(text.length())}));
    print("\r\n");
}

} // namespace toolbelt::cli
