#include "Includes/stringFuncs/formatter.h"

#include <iterator>
#include <limits>

#include "Includes/stringFuncs/format_output.h"

namespace toolbelt {
namespace {

constexpr std::ptrdiff_t maxDirective = 100;
constexpr std::int32_t unlimited = std::numeric_limits<std::int32_t>::max();
constexpr wchar_t invalidValue[] = L"'Invalid value'";

class Formatter
{
public:
    Formatter(wchar_t* buffer, std::int32_t capacity, va_list arguments) noexcept : output_(buffer, capacity)
    {
        va_copy(arguments_, arguments);
    }
    ~Formatter() { va_end(arguments_); }
    Formatter(const Formatter&) = delete;
    Formatter& operator=(const Formatter&) = delete;

    std::int32_t run(const wchar_t* format) noexcept
    {
        while (*format && output_.room() > 0) {
            if (*format == L'%')
                format = takeDirective(format);
            else
                output_.put(*format++);
        }
        return output_.written();
    }

private:
    // Writes the directive that starts at the percent sign and returns where the text goes on.
    const wchar_t* takeDirective(const wchar_t* start) noexcept
    {
        const wchar_t* at = start + 1;
        if (*at == L'%') {
            output_.put(L'%');
            return at + 1;
        }
        FormatDirective directive;
        at = flags(at, directive);
        at = width(at, directive);
        at = precision(at, directive);
        at = size(at, directive);
        directive.letter = *at;
        const bool letter = (directive.letter >= L'a' && directive.letter <= L'z') ||
                            (directive.letter >= L'A' && directive.letter <= L'Z');
        if (!letter) {
            output_.text(start, at - start);
            return at;
        }
        ++at;
        if (at - start > maxDirective) { // its arguments are taken, so that those behind keep their places
            FormatOutput nowhere(nullptr, 0);
            value(nowhere, directive);
            directive.letter = 0;
        }
        if (!value(output_, directive)) output_.text(invalidValue, std::size(invalidValue) - 1);
        return at;
    }

    static const wchar_t* flags(const wchar_t* at, FormatDirective& directive) noexcept
    {
        for (;; ++at) {
            if (*at == L'-')
                directive.left = true;
            else if (*at == L'+')
                directive.plus = true;
            else if (*at == L' ')
                directive.blank = true;
            else if (*at == L'#')
                directive.alternate = true;
            else if (*at == L'0')
                directive.zero = true;
            else
                return at;
        }
    }

    const wchar_t* width(const wchar_t* at, FormatDirective& directive) noexcept
    {
        if (*at != L'*') return number(at, directive.width);
        directive.width = va_arg(arguments_, int);
        if (directive.width < 0) {
            directive.left = true;
            directive.width = directive.width == -unlimited - 1 ? unlimited : -directive.width;
        }
        return at + 1;
    }

    const wchar_t* precision(const wchar_t* at, FormatDirective& directive) noexcept
    {
        if (*at != L'.') return at;
        if (at[1] != L'*') {
            directive.precision = 0;
            return number(at + 1, directive.precision);
        }
        const int given = va_arg(arguments_, int);
        directive.precision = given < 0 ? -1 : given;
        return at + 2;
    }

    static const wchar_t* number(const wchar_t* at, std::int32_t& result) noexcept
    {
        for (; *at >= L'0' && *at <= L'9'; ++at)
            result = result > (unlimited - 9) / 10 ? unlimited : result * 10 + (*at - L'0');
        return at;
    }

    // The longer prefixes win.
    static const wchar_t* size(const wchar_t* at, FormatDirective& directive) noexcept
    {
        using Size = FormatDirective::Size;
        if (*at == L'I') {
            directive.size = at[1] == L'6' && at[2] == L'4' ? Size::eight : Size::four;
            return at[1] == L'6' && at[2] == L'4' ? at + 3 : at[1] == L'3' && at[2] == L'2' ? at + 3 : at + 1;
        }
        if (*at == L'l')
            directive.size = Size::wide;
        else if (*at == L'h')
            directive.size = Size::two;
        else
            return at;
        return at + 1;
    }

    // Takes the argument and writes it; false for an unknown letter.
    bool value(FormatOutput& output, const FormatDirective& directive) noexcept
    {
        const bool narrow = directive.size == FormatDirective::Size::two;
        const bool wide = directive.size == FormatDirective::Size::wide;
        switch (directive.letter) {
        case L'd':
        case L'i':
            formatInteger(output, directive, signedArgument(directive));
            return true;
        case L'o':
        case L'u':
        case L'x':
        case L'X':
            formatInteger(output, directive, unsignedArgument(directive));
            return true;
        case L'e':
        case L'E':
        case L'f':
        case L'g':
        case L'G':
            formatDouble(output, directive, va_arg(arguments_, double));
            return true;
        case L'p':
            formatPointer(output, directive, va_arg(arguments_, void*));
            return true;
        case L'n':
            (void)va_arg(arguments_, void*);
            return true;
        case L'c':
            formatCharacter(output, directive, va_arg(arguments_, int), narrow);
            return true;
        case L'C':
            formatCharacter(output, directive, va_arg(arguments_, int), !wide);
            return true;
        case L's':
            formatString(output, directive, va_arg(arguments_, const void*), narrow);
            return true;
        case L'S':
            formatString(output, directive, va_arg(arguments_, const void*), !wide);
            return true;
        default:
            return false;
        }
    }

    std::uint64_t signedArgument(const FormatDirective& directive) noexcept
    {
        if (directive.size == FormatDirective::Size::eight)
            return static_cast<std::uint64_t>(va_arg(arguments_, std::int64_t));
        std::int64_t argument = va_arg(arguments_, std::int32_t);
        if (directive.size == FormatDirective::Size::two) argument = static_cast<std::int16_t>(argument);
        return static_cast<std::uint64_t>(argument);
    }

    std::uint64_t unsignedArgument(const FormatDirective& directive) noexcept
    {
        if (directive.size == FormatDirective::Size::eight) return va_arg(arguments_, std::uint64_t);
        const std::uint32_t argument = va_arg(arguments_, std::uint32_t);
        return directive.size == FormatDirective::Size::two ? argument & 0xFFFF : argument;
    }

    FormatOutput output_;
    va_list arguments_;
};

} // namespace

std::int32_t formatWideV(wchar_t* buffer, std::int32_t capacity, const wchar_t* format, va_list arguments) noexcept
{
    if (buffer == nullptr || capacity <= 0) return 0;
    const std::int32_t written = Formatter(buffer, capacity, arguments).run(format ? format : L"");
    buffer[written] = 0;
    return written;
}

std::int32_t formatWide(wchar_t* buffer, std::int32_t capacity, const wchar_t* format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const std::int32_t written = formatWideV(buffer, capacity, format, arguments);
    va_end(arguments);
    return written;
}

} // namespace toolbelt
