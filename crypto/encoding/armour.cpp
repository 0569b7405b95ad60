// Armoured text: where the body between the lines is, and where its headers end. Only bytes of the text are read, and
// every search goes forward once, so that the time is linear in the text (times the length of the line searched for).
#include "crypto/encoding/armour.h"

#include <string_view>

namespace toolbelt {
namespace {

using namespace std::string_view_literals;
using std::string_view;

constexpr string_view HEADER_SEPARATOR = "\r\n\r\n \r\n\r\n"sv;
constexpr string_view BLANKS = "\n\r \t"sv; // also what may stand before a header's label

// The LF of a header line that has the label and before it, from `from` on, blanks only; npos when there is none.
std::size_t headerLineEnd(string_view body, std::size_t from, string_view label)
{
    const std::size_t start = body.find_first_not_of(BLANKS, from);
    if (start == string_view::npos) return start;
    string_view line = body;
    line.remove_prefix(start);
    return line.starts_with(label) ? body.find('\n', start + label.size()) : string_view::npos;
}

// Just behind the first LF that only blanks separate from the LF before it; npos when there is none.
std::size_t emptyLineEnd(string_view body, std::size_t from)
{
    bool lineIsBlank = false; // nothing is known of the line that `from` stands in
    for (std::size_t i = from; i < body.size(); ++i) {
        if (body[i] == '\n') {
            if (lineIsBlank) return i + 1;
            lineIsBlank = true;
        } else if (BLANKS.find(body[i]) == string_view::npos) {
            lineIsBlank = false;
        }
    }
    return string_view::npos;
}

} // namespace

std::uint32_t armourHeaderLength(const char* body, std::uint32_t length)
{
    const string_view text(body, length);
    if (const std::size_t separator = text.find(HEADER_SEPARATOR); separator != string_view::npos)
        return static_cast<std::uint32_t>(separator + HEADER_SEPARATOR.size());

    const std::size_t versionEnd = headerLineEnd(text, 0, "Version:"sv);
    const std::size_t base = versionEnd != string_view::npos ? versionEnd : 0;
    std::size_t end = headerLineEnd(text, base, "Comment:"sv);
    if (end == string_view::npos) end = emptyLineEnd(text, base);
    return static_cast<std::uint32_t>(end != string_view::npos ? end : base);
}

Status findArmourBody(const char** bodyStart, std::uint32_t* bodyLength, const char* text, std::uint32_t textLength,
                      const char* beginLine, const char* endLine, const char** headerStart, const char** restStart,
                      std::uint32_t* restLength)
{
    if (beginLine == nullptr || endLine == nullptr) return TEXT_E_MALFORMED;
    const string_view whole(text, textLength), begin(beginLine), end(endLine);
    std::size_t bodyAt = whole.find(begin);
    if (bodyAt == string_view::npos) return TEXT_E_MALFORMED;
    bodyAt += begin.size();
    const std::size_t endAt = whole.find(end, bodyAt);
    if (endAt == string_view::npos) return TEXT_E_MALFORMED;
    const std::size_t restAt = endAt + end.size();

    const std::uint32_t headers = armourHeaderLength(text + bodyAt, static_cast<std::uint32_t>(endAt - bodyAt));
    *bodyStart = text + bodyAt + headers;
    *bodyLength = static_cast<std::uint32_t>(endAt - bodyAt) - headers;
    if (restStart != nullptr) *restStart = text + restAt;
    if (restLength != nullptr) *restLength = static_cast<std::uint32_t>(whole.size() - restAt);
    if (headerStart != nullptr) {
        *headerStart = nullptr;
        if (headers > 1) {
            // A header part of nothing but blanks leads past itself, to the first line of the body.
            const std::size_t header = whole.find_first_not_of(BLANKS, bodyAt + 1);
            *headerStart = text + (header != string_view::npos ? header : whole.size());
        }
    }
    return STATUS_OK;
}

} // namespace toolbelt
