#include "json/json_source.h"

namespace toolbelt {
namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isOfNumber(char c)
{
    return isDigit(c) || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E';
}

// Four hexadecimal digits.
bool readUnit(std::uint32_t& unit, const char*& at, const char* end)
{
    if (end - at < 4) return false;
    unit = 0;
    for (const char* stop = at + 4; at != stop; ++at) {
        const char lower = static_cast<char>(*at | 0x20);
        const bool letter = lower >= 'a' && lower <= 'f';
        if (!letter && !isDigit(*at)) return false;
        unit = unit << 4 | static_cast<std::uint32_t>(letter ? lower - 'a' + 10 : *at - '0');
    }
    return true;
}

// What follows "\u": one unit, or two that make a surrogate pair.
bool readCharacter(std::uint32_t& character, const char*& at, const char* end)
{
    if (!readUnit(character, at, end) || (character & 0xFC00) == 0xDC00) return false;
    if ((character & 0xFC00) != 0xD800) return true;
    std::uint32_t low = 0;
    if (end - at < 6 || at[0] != '\\' || at[1] != 'u') return false;
    at += 2;
    if (!readUnit(low, at, end) || (low & 0xFC00) != 0xDC00) return false;
    character = 0x10000 + ((character & 0x3FF) << 10) + (low & 0x3FF);
    return true;
}

char plainEscape(char letter)
{
    switch (letter) {
    case 'b':
        return '\b';
    case 'f':
        return '\f';
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    default:
        return letter;
    }
}

struct Room
{
    char* out;
    std::uint32_t capacity;
    std::uint32_t used = 0;

    bool put(std::uint32_t byte)
    {
        if (used == capacity) return false;
        out[used++] = static_cast<char>(byte);
        return true;
    }
    bool putUtf8(std::uint32_t c)
    {
        const unsigned more = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
        constexpr std::uint32_t leads[] = {0, 0xC0, 0xE0, 0xF0};
        if (!put(leads[more] | c >> (6 * more))) return false;
        for (unsigned i = more; i-- > 0;)
            if (!put(0x80 | (c >> (6 * i) & 0x3F))) return false;
        return true;
    }
};

} // namespace

bool JsonSource::next(JsonToken& token)
{
    for (; at_ != end_ && *at_ != 0 && *at_ != '"' && *at_ != '-' && !isDigit(*at_); ++at_)
        if (*at_ == '\n') ++line_;
    if (at_ == end_ || *at_ == 0) return false;
    token.line = line_;
    token.isString = *at_ == '"';
    token.start = token.isString ? ++at_ : at_;
    if (token.isString) {
        for (; at_ != end_ && *at_ != '"'; ++at_)
            if (*at_ == '\\' && ++at_ == end_) return false;
        if (at_ == end_) return false;
    } else {
        while (at_ != end_ && isOfNumber(*at_)) ++at_;
    }
    token.length = static_cast<std::uint32_t>(at_ - token.start);
    if (token.isString) ++at_;
    return true;
}

bool jsonUnescape(char* out, std::uint32_t capacity, std::uint32_t* length, const JsonToken& string)
{
    Room room = {out, capacity};
    const char* end = string.start + string.length;
    for (const char* at = string.start; at != end;) {
        const char c = *at++;
        if (c != '\\') {
            if (!room.put(static_cast<unsigned char>(c))) return false;
            continue;
        }
        if (at == end) return false;
        const char letter = *at++;
        std::uint32_t character = 0;
        if (letter != 'u') {
            if (!room.put(static_cast<unsigned char>(plainEscape(letter)))) return false;
        } else if (!readCharacter(character, at, end) || !room.putUtf8(character)) {
            return false;
        }
    }
    *length = room.used;
    return true;
}

} // namespace toolbelt
