// What the formatter's parts share: one parsed directive, the bounded output, and the layout of a converted number.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace toolbelt {

struct FormatDirective
{
    enum class Size
    {
        plain,
        eight,
        four,
        two,
        wide
    }; // nothing, I64, I32 or I, h, l

    bool left = false;      // -
    bool plus = false;      // +
    bool blank = false;     // a blank
    bool alternate = false; // #
    bool zero = false;      // 0
    std::int32_t width = 0;
    std::int32_t precision = -1; // -1: none given
    Size size = Size::plain;
    wchar_t letter = 0;
};

// FormatOutput takes units until the buffer is full and ignores the rest; room for the terminator is kept. Counts may
// be of any size: no work is done for what does not fit.
class FormatOutput
{
public:
    FormatOutput(wchar_t* buffer, std::int32_t capacity) noexcept
        : begin_(buffer), at_(buffer), left_(buffer && capacity > 0 ? capacity - 1 : 0)
    {}
    std::int32_t room() const noexcept { return left_; }
    std::int32_t written() const noexcept { return static_cast<std::int32_t>(at_ - begin_); }
    void put(wchar_t unit) noexcept { fill(unit, 1); }
    void fill(wchar_t unit, std::int64_t count) noexcept
    {
        const std::int32_t n = fitting(count);
        std::fill_n(at_, n, unit);
        advance(n);
    }
    // Wide text or 8-bit text of ASCII.
    template <typename Unit>
    void text(const Unit* source, std::int64_t count) noexcept
    {
        const std::int32_t n = fitting(count);
        for (std::int32_t i = 0; i < n; ++i) at_[i] = static_cast<wchar_t>(source[i]);
        advance(n);
    }

private:
    std::int32_t fitting(std::int64_t count) const noexcept
    {
        return static_cast<std::int32_t>(std::clamp<std::int64_t>(count, 0, left_));
    }
    void advance(std::int32_t n) noexcept
    {
        if (n == 0) return;
        at_ += n;
        left_ -= n;
    }

    wchar_t* begin_;
    wchar_t* at_;
    std::int32_t left_;
};

// FormatPieces: the body of a number as runs of text and of zeros, so that a precision of any size costs no memory.
class FormatPieces
{
public:
    void text(const char* source, std::int64_t count) noexcept
    {
        if (count > 0) pieces_[count_++] = {source, count};
    }
    void zeros(std::int64_t count) noexcept { text(nullptr, count); }
    std::int64_t total() const noexcept
    {
        std::int64_t sum = 0;
        for (std::size_t i = 0; i < count_; ++i) sum += pieces_[i].count;
        return sum;
    }
    void write(FormatOutput& output) const noexcept
    {
        for (std::size_t i = 0; i < count_; ++i) {
            if (pieces_[i].source)
                output.text(pieces_[i].source, pieces_[i].count);
            else
                output.fill(L'0', pieces_[i].count);
        }
    }

private:
    struct Piece
    {
        const char* source; // null: zeros
        std::int64_t count;
    };
    Piece pieces_[8];
    std::size_t count_ = 0;
};

// Conversions d i u o x X (value: the argument's bits, extended to 64), p, and e E f g G.
void formatInteger(FormatOutput& output, const FormatDirective& directive, std::uint64_t value) noexcept;
void formatPointer(FormatOutput& output, const FormatDirective& directive, const void* address) noexcept;
void formatDouble(FormatOutput& output, const FormatDirective& directive, double value) noexcept;
// Conversions c C s S; narrow: multibyte text in the default code page. The string may be null.
void formatCharacter(FormatOutput& output, const FormatDirective& directive, int character, bool narrow) noexcept;
void formatString(FormatOutput& output, const FormatDirective& directive, const void* string, bool narrow) noexcept;

} // namespace toolbelt
