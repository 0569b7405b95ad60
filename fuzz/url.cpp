// URL splitting against a model on texts of another type.
#include <string>

#include "fuzz/target.h"
#include "net/split_url.h"

namespace toolbelt::fuzz {
namespace {

std::u16string copyOf(const wchar_t* units)
{
    std::u16string text;
    while (units && *units) text += static_cast<char16_t>(*units++);
    return text;
}

std::uint32_t portOf(const std::u16string& text)
{
    std::size_t at = text.find_first_not_of(u" \t\n\v\f\r");
    if (at == std::u16string::npos) return 0;
    const bool negative = text[at] == '-';
    if (negative || text[at] == '+') ++at;
    std::int64_t value = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at)
        value = std::min<std::int64_t>(value * 10 + text[at] - '0', std::int64_t{1} << 40);
    value = negative ? -value : value;
    return static_cast<std::uint32_t>(std::min<std::int64_t>(std::max<std::int64_t>(value, INT32_MIN), INT32_MAX));
}

const Target target("url", [](Input input) {
    const std::vector<wchar_t> units = input.units();
    const std::u16string text = copyOf(units.data());
    std::u16string rest = text.substr(std::min(text.size(), text.find_first_not_of(u" \t")));
    std::u16string lower;
    for (const char16_t unit : rest.substr(0, 8)) lower += unit >= 'A' && unit <= 'Z' ? char16_t(unit + 32) : unit;
    const bool secure = lower == u"https://", plain = lower.starts_with(u"http://");

    UrlParts parts;
    require(splitUrl(parts, units.data()) == (secure || plain), "a scheme");
    if (!secure && !plain) return require(!parts.host && !parts.path && parts.port == 0, "nothing without one");
    rest = rest.substr(secure ? 8 : 7);
    const std::size_t colon = rest.find(u':'), slash = rest.find(u'/', colon == rest.npos ? 0 : colon + 1);
    const std::u16string port =
        colon == rest.npos ? u"" : rest.substr(colon + 1, slash == rest.npos ? slash : slash - colon - 1);
    require(parts.secure == secure && copyOf(parts.host) == rest.substr(0, std::min(colon, slash)), "the host");
    require((parts.path != nullptr) == (slash != rest.npos), "a path or none");
    require(!parts.path || copyOf(parts.path) == rest.substr(slash + 1), "the path");
    require(parts.port == portOf(port), "the port");
    UrlParts& same = parts; // a piece of a URL may be split into the record it lies in
    const std::u16string piece = copyOf(parts.host);
    if (!splitUrl(same, parts.host)) require(!same.host && copyOf(same.text.text()) == piece, "a piece of its own");
});

} // namespace
} // namespace toolbelt::fuzz
