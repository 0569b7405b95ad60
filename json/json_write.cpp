#include "json/json_write.h"

#include <algorithm>
#include <limits>
#include <type_traits>

#include "Includes/stringFuncs/conversion.h"
#include "crypto/base/heap.h"
#include "json/json_number.h"

namespace toolbelt {
namespace {

struct Escape
{
    wchar_t character;
    wchar_t letter; // behind the backslash
};
constexpr Escape ESCAPES[] = {{L'\\', L'\\'}, {L'"', L'"'},  {L'\t', L't'}, {L'\r', L'r'},
                              {L'\n', L'n'},  {L'\b', L'b'}, {L'\'', L'\''}};
// The apostrophe's row is there for readers; by design it is never consulted.
constexpr std::uint32_t SEARCHED_ESCAPES = 6;

// 0 when the character is written as it is.
wchar_t escapeLetter(wchar_t character)
{
    if (character > L'\\') return 0;
    for (std::uint32_t i = 0; i < SEARCHED_ESCAPES; ++i)
        if (ESCAPES[i].character == character) return ESCAPES[i].letter;
    return 0;
}

std::int32_t unitsOf(const wchar_t* text, std::int32_t count)
{
    if (count >= 0 && text) return count;
    return text ? static_cast<std::int32_t>(textLength(text)) : 0;
}

template <typename Character>
std::uint32_t countEscapes(const Character* text, std::uint32_t count)
{
    return static_cast<std::uint32_t>(std::count_if(text, text + count, [](Character c) {
        return escapeLetter(static_cast<wchar_t>(static_cast<std::make_unsigned_t<Character>>(c))) != 0;
    }));
}

bool appendBetweenQuotes(const cWCS& scratch, cWCS& out)
{
    const std::int32_t before = out.length();
    if (out.Append(L"\"", 1) != 0 && out.Append(scratch.text(), scratch.length()) != 0 && out.Append(L"\"", 1) != 0)
        return true;
    if (out.text()) out.SetLength(before);
    return false;
}

bool appendQuoted(const wchar_t* text, std::int32_t count, cWCS& out, cWCS& scratch)
{
    return jsonEscape(scratch, text, count) && appendBetweenQuotes(scratch, out);
}

// Where the walk's texts go: first to be counted, then to be written. Each operation returns false to end the walk.
class Measure
{
public:
    explicit Measure(std::uint32_t room) : room_(room) {}
    bool literal(const wchar_t*, std::uint32_t count) { return add(count); }
    bool newLine(std::uint32_t level) { return level >= JSON_LEVEL_LIMIT || add(2 + 2 * level); }
    bool quoted(const char* characters, std::uint32_t length)
    {
        if (length > std::uint32_t(std::numeric_limits<std::int32_t>::max())) return false;
        const std::int32_t units = multibyteToWide(-1, characters, static_cast<std::int32_t>(length), nullptr, 0);
        return add(static_cast<std::uint32_t>(units)) && add(2) && add(countEscapes(characters, length));
    }
    std::uint32_t units() const { return units_; }

private:
    bool add(std::uint32_t count)
    {
        if (count > room_ - units_) return false;
        units_ += count;
        return true;
    }

    std::uint32_t room_;
    std::uint32_t units_ = 0;
};

class Output
{
public:
    explicit Output(cWCS& out) : out_(out) {}
    bool literal(const wchar_t* text, std::uint32_t count)
    {
        return jsonAppendText(text, out_, false, false, static_cast<std::int32_t>(count));
    }
    bool newLine(std::uint32_t level) { return jsonNewLine(level, out_); }
    bool quoted(const char* characters, std::uint32_t length)
    {
        wide_.AssignMultibyte(characters, static_cast<std::int32_t>(length));
        return wide_.text() && appendQuoted(wide_.text(), wide_.length(), out_, scratch_);
    }

private:
    cWCS& out_;
    cWCS wide_, scratch_; // kept from text to text
};

// An object or array that the walk is in.
struct Frame
{
    const JsonValue* value;
    std::uint32_t next; // child to look at
    bool written;       // whether a child was
};

// The objects and arrays from the root down to where the walk is. Trees that people write do without the heap.
class Path
{
public:
    bool push(const JsonValue* value)
    {
        if (depth_ == room_ && !grow()) return false;
        frames_[depth_++] = {value, 0, false};
        return true;
    }
    void pop() { --depth_; }
    Frame& top() { return frames_[depth_ - 1]; }
    std::uint32_t depth() const { return depth_; }

private:
    bool grow()
    {
        SecretArray<Frame> more(2 * std::size_t(room_));
        if (!more) return false;
        std::copy_n(frames_, depth_, more.data());
        more_.swap(more);
        frames_ = more_.data();
        room_ *= 2;
        return true;
    }

    Frame few_[32];
    SecretArray<Frame> more_;
    Frame* frames_ = few_;
    std::uint32_t room_ = 32;
    std::uint32_t depth_ = 0;
};

std::uint32_t childCount(const JsonValue& value)
{
    return value.type == JSON_OBJECT ? value.object.count : value.array.count;
}

template <typename Sink>
bool writeNumber(const JsonValue& value, Sink& sink)
{
    const bool blank = (value.flags & JSON_BLANK) != 0;
    wchar_t text[JSON_NUMBER_SIZE];
    const WipeOnExit guard(text);
    if (value.type == JSON_DOUBLE) return sink.literal(text, jsonNumberText(text, blank ? 0.0 : value.number));
    if (blank) return true;
    const std::uint32_t units = jsonNumberText(text, value.integer);
    return units != 0 ? sink.literal(text, units) : sink.literal(L"Error", 5);
}

// Any value but an object or array.
template <typename Sink>
bool writeSingle(const JsonValue& value, Sink& sink)
{
    const bool blank = (value.flags & JSON_BLANK) != 0;
    switch (value.type) {
    case JSON_NONE:
        return true;
    case JSON_INTEGER:
    case JSON_DOUBLE:
        return writeNumber(value, sink);
    case JSON_STRING:
        return sink.quoted(value.string.characters, blank ? 0 : value.string.length);
    case JSON_BOOLEAN:
        return !blank && value.boolean ? sink.literal(L"true", 4) : sink.literal(L"false", 5);
    case JSON_NULL:
        return sink.literal(L"null", 4);
    default:
        return sink.literal(L"<error>", 7);
    }
}

// Writes a value, or begins an object or array that has something in it.
template <typename Sink>
bool begin(const JsonValue* value, std::uint32_t level, Path& path, Sink& sink)
{
    if (!value) return true;
    if (value->type != JSON_OBJECT && value->type != JSON_ARRAY) return writeSingle(*value, sink);
    const bool object = value->type == JSON_OBJECT;
    if (!sink.literal(object ? L"{" : L"[", 1)) return false;
    const bool empty = (value->flags & (JSON_HIDDEN | JSON_BLANK)) != 0 || childCount(*value) == 0;
    return empty ? sink.newLine(level) && sink.literal(object ? L"}" : L"]", 1) : path.push(value);
}

template <typename Sink>
bool writeChild(Frame& frame, std::uint32_t level, Path& path, Sink& sink)
{
    const std::uint32_t index = frame.next++;
    const JsonMember* member = frame.value->type == JSON_OBJECT ? &frame.value->object.members[index] : nullptr;
    const JsonValue* value = member ? member->value : frame.value->array.elements[index];
    if (value && (value->flags & JSON_HIDDEN)) return true;
    if (frame.written && !sink.literal(L",", 1)) return false;
    frame.written = true;
    if (!sink.newLine(level)) return false;
    if (member && (!sink.quoted(member->name, member->nameLength) || !sink.literal(L":", 1))) return false;
    return begin(value, level, path, sink); // the frame may have moved
}

template <typename Sink>
bool walk(const JsonValue* root, std::uint32_t level, Sink& sink)
{
    Path path;
    level = std::min(level, JSON_LEVEL_LIMIT); // all from there on are alike
    if (!begin(root, level, path, sink)) return false;
    while (path.depth() > 0) {
        Frame& frame = path.top();
        if (frame.next < childCount(*frame.value)) {
            if (!writeChild(frame, level + path.depth(), path, sink)) return false;
        } else {
            const bool object = frame.value->type == JSON_OBJECT;
            path.pop();
            if (!sink.newLine(level + path.depth()) || !sink.literal(object ? L"}" : L"]", 1)) return false;
        }
    }
    return true;
}

} // namespace

bool jsonWrite(std::uint32_t level, cWCS& out, const JsonValue* value)
{
    if (!value || value->type == JSON_NONE) return false;
    const std::int32_t before = out.length();
    if (static_cast<std::uint32_t>(before) > JSON_TEXT_LIMIT) return false;
    Measure measure(JSON_TEXT_LIMIT - static_cast<std::uint32_t>(before));
    if (!walk(value, level, measure)) return false;
    // One unit more than the text: a string grows when its terminator would take the last unit.
    if (out.Append(nullptr, static_cast<std::int32_t>(measure.units()) + 1) == 0) return false;
    out.SetLength(before);
    Output output(out);
    if (!walk(value, level, output)) {
        out.SetLength(before);
        return false;
    }
    return value->type <= JSON_NULL;
}

bool jsonAppendText(const wchar_t* text, cWCS& out, bool quoted, bool escaped, std::int32_t count)
{
    count = unitsOf(text, count);
    cWCS scratch;
    if (quoted && escaped) return appendQuoted(text, count, out, scratch);
    if (escaped) return jsonEscape(scratch, text, count) && out.Append(scratch.text(), scratch.length()) != 0;
    if (!quoted) return out.Append(text, count) != 0;
    // A text within out would be lost where the first quote makes it grow.
    return scratch.Append(text, count) != 0 && appendBetweenQuotes(scratch, out);
}

const wchar_t* jsonEscape(cWCS& scratch, const wchar_t* text, std::int32_t count)
{
    count = unitsOf(text, count);
    const std::uint32_t units =
        static_cast<std::uint32_t>(count) + countEscapes(text, static_cast<std::uint32_t>(count));
    if (units > JSON_TEXT_LIMIT) return nullptr;
    if (scratch.text()) scratch.SetLength(0);
    if (scratch.Append(nullptr, static_cast<std::int32_t>(units)) == 0) return nullptr;
    wchar_t* to = scratch.text();
    for (std::int32_t i = 0; i < count; ++i) {
        const wchar_t letter = escapeLetter(text[i]);
        if (letter != 0) *to++ = L'\\';
        *to++ = letter != 0 ? letter : text[i];
    }
    return scratch.text();
}

bool jsonNewLine(std::uint32_t level, cWCS& out)
{
    if (level >= JSON_LEVEL_LIMIT) return true;
    const std::int32_t before = out.length();
    if (out.Append(nullptr, static_cast<std::int32_t>(2 + 2 * level)) == 0) return false;
    wchar_t* line = out.text() + before;
    line[0] = L'\r';
    line[1] = L'\n';
    std::fill_n(line + 2, 2 * level, L' ');
    return true;
}

} // namespace toolbelt
