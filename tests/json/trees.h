// Trees in few words, and the writer's text in a form that a test can be read by.
#pragma once

#include <initializer_list>
#include <string>
#include <utility>

#include "Includes/stringFuncs/wcs.h"
#include "json/json_value.h"
#include "json/json_write.h"

namespace toolbelt::test {

inline JsonValue* text(const std::string& bytes)
{
    return jsonNewString(bytes.data(), static_cast<std::int32_t>(bytes.size()));
}

inline JsonValue* array(std::initializer_list<JsonValue*> elements)
{
    JsonValue* value = jsonNew(JSON_ARRAY);
    for (JsonValue* element : elements) jsonAddElement(*value, element);
    return value;
}

inline JsonValue* object(std::initializer_list<std::pair<std::string, JsonValue*>> members)
{
    JsonValue* value = jsonNew(JSON_OBJECT);
    for (const auto& [name, member] : members)
        jsonAddMember(*value, name.data(), static_cast<std::int32_t>(name.size()), member);
    return value;
}

inline JsonValue* flagged(std::uint32_t flags, JsonValue* value)
{
    value->flags = flags;
    return value;
}

// CR LF is shown as a line feed, a unit beyond ASCII as <hex>.
inline std::string shown(const cWCS& out)
{
    std::string result;
    for (std::int32_t i = 0; i < out.length(); ++i) {
        const unsigned unit = out.text()[i];
        char code[16];
        std::snprintf(code, sizeof code, "<%x>", unit);
        if (unit == '\r' && out.text()[i + 1] == '\n') continue;
        if (unit < 0x80)
            result += static_cast<char>(unit);
        else
            result += code;
    }
    return result;
}

inline std::string written(const JsonValue* value, std::uint32_t level = 0)
{
    cWCS out;
    return jsonWrite(level, out, value) ? shown(out) : "false";
}

} // namespace toolbelt::test
