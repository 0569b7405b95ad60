// Texts and characters, wide and multibyte.
#include <limits>

#include "Includes/stringFuncs/conversion.h"
#include "Includes/stringFuncs/format_output.h"
#include "Includes/stringFuncs/text_units.h"
#include "crypto/base/heap.h"

namespace toolbelt {
namespace {

constexpr std::int32_t unlimited = std::numeric_limits<std::int32_t>::max();

// MultibyteReader takes multibyte text apart into characters, so that no byte behind the last one wanted is read.
class MultibyteReader
{
public:
    explicit MultibyteReader(const char* text) noexcept : at_(text), codePage_(DefaultCodePage()) {}
    // The units of the next character, at most 4 (malformed bytes may give one each); 0 at the end.
    std::int32_t next(wchar_t (&units)[4]) noexcept
    {
        const auto lead = static_cast<unsigned char>(*at_);
        if (lead == 0) return 0;
        std::int32_t size = 1;
        for (const std::int32_t most = bytesFrom(lead); size < most && continues(at_[size]);) ++size;
        std::int32_t count = 1;
        if (lead < 0x80)
            units[0] = lead;
        else
            count = multibyteToWide(codePage_, at_, size, units, 4);
        at_ += size;
        if (count == 0) {
            units[0] = 0xFFFD;
            count = 1;
        }
        return count;
    }

private:
    std::int32_t bytesFrom(unsigned char lead) const noexcept
    {
        if (codePage_ != codePageUtf8) return lead < 0x80 ? 1 : leadBytes(lead);
        return lead < 0xC2 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 1;
    }
    std::int32_t leadBytes(unsigned char lead) const noexcept { return isLeadByte(codePage_, lead) ? 2 : 1; }
    bool continues(char byte) const noexcept
    {
        return codePage_ == codePageUtf8 ? (static_cast<unsigned char>(byte) & 0xC0) == 0x80 : byte != 0;
    }

    const char* at_;
    std::int32_t codePage_;
};

// Gives whole characters to take until limit units are reached, or enough of them; returns the units given.
template <typename Take>
std::int32_t eachCharacter(const char* text, std::int32_t limit, std::int32_t enough, Take take) noexcept
{
    MultibyteReader reader(text);
    wchar_t units[4];
    const WipeOnExit guard(units);
    std::int32_t count = 0;
    while (count < limit && count < enough) {
        const std::int32_t n = reader.next(units);
        if (n == 0 || n > limit - count) break;
        take(units, n);
        count += n;
    }
    return count;
}

template <typename Write>
void justify(FormatOutput& output, const FormatDirective& directive, std::int32_t count, Write write) noexcept
{
    if (!directive.left) output.fill(L' ', std::int64_t(directive.width) - count);
    write();
    if (directive.left) output.fill(L' ', std::int64_t(directive.width) - count);
}

} // namespace

void formatCharacter(FormatOutput& output, const FormatDirective& directive, int character, bool narrow) noexcept
{
    wchar_t units[4] = {static_cast<wchar_t>(character)};
    const WipeOnExit unitsGuard(units);
    if (narrow) {
        char text[2] = {static_cast<char>(character), 0};
        const WipeOnExit textGuard(text);
        if (MultibyteReader(text).next(units) == 0) units[0] = 0;
    }
    justify(output, directive, 1, [&] { output.put(units[0]); });
}

void formatString(FormatOutput& output, const FormatDirective& directive, const void* string, bool narrow) noexcept
{
    if (string == nullptr) {
        string = L"<Null>";
        narrow = false;
    }
    // How far the text is looked at: what lies behind the width and the buffer's end changes nothing.
    const std::int32_t limit = directive.precision < 0 ? unlimited : directive.precision;
    if (narrow) {
        const char* const text = static_cast<const char*>(string);
        const auto ignore = [](const wchar_t*, std::int32_t) {};
        const std::int32_t count = directive.width ? eachCharacter(text, limit, directive.width, ignore) : 0;
        justify(output, directive, count, [&] {
            eachCharacter(text, limit, output.room(),
                          [&](const wchar_t* units, std::int32_t n) { output.text(units, n); });
        });
    } else {
        const wchar_t* const text = static_cast<const wchar_t*>(string);
        const std::int32_t enough = std::min(limit, std::max(directive.width, output.room()));
        const auto count = static_cast<std::int32_t>(lengthWithin(text, static_cast<std::size_t>(enough)));
        justify(output, directive, count, [&] { output.text(text, count); });
    }
}

} // namespace toolbelt
