// TextBuffer: the owned, zero-terminated buffer under every string class, for 16-bit and for 8-bit units. It knows the
// growth rule, and gives no buffer back to the heap before it has overwritten the whole of it with zeros.
//
// Every unit behind length() is zero, unless the caller wrote there: the terminator comes back when the text changes,
// the other zeros with fixLength(). Capacities move in steps of 4096 bytes. When memory runs out an operation says so
// on the debug channel, returns 0 and leaves the buffer as it was; replace() and convertInto() leave it empty.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "Includes/stringFuncs/text_units.h"

namespace toolbelt {

// A zeroed block of the smallest multiple of 4096 bytes that holds the units, or null, said on the debug channel. The
// capacity is the block's size in units.
template <typename Unit>
Unit* allocateText(std::int64_t units, std::int32_t& capacity) noexcept;

template <typename Unit>
class TextBuffer
{
public:
    TextBuffer() noexcept = default;
    TextBuffer(const TextBuffer&) = delete;
    TextBuffer& operator=(const TextBuffer&) = delete;
    ~TextBuffer() { clear(); }

    Unit* text() const noexcept { return text_; }
    std::int32_t capacity() const noexcept { return capacity_; }
    std::int32_t length() const noexcept { return length_; }

    // As cWCS names them (wcs.h).
    std::int32_t append(const Unit* source, std::int32_t count) noexcept;
    std::int32_t setLength(std::int32_t n) noexcept;
    void fixLength() noexcept;
    std::int32_t assign(const Unit* source, std::int32_t count) noexcept;

    // Makes room for a text of n units that the caller then writes to text(): old content is gone, length() is n. A
    // buffer that is too small is released before the new one is asked for: on failure nothing is left. False then.
    bool replace(std::int64_t n) noexcept;
    // Wipes and frees.
    void clear() noexcept;
    bool holds(const void* address) const noexcept;
    void swap(TextBuffer& other) noexcept
    {
        std::swap(text_, other.text_);
        std::swap(capacity_, other.capacity_);
        std::swap(length_, other.length_);
    }

private:
    Unit* text_ = nullptr;
    std::int32_t capacity_ = 0;
    std::int32_t length_ = 0;
};

// Replaces the content by converted text: convert(source, count, out, capacity) returns the units of the result,
// without out those that it would have. A null source with a negative count (up to the terminator) changes nothing.
template <typename Unit, typename Source, typename Convert>
void convertInto(TextBuffer<Unit>& buffer, const Source* source, std::int32_t count, Convert convert) noexcept
{
    if (count < 0) {
        if (source == nullptr) return;
        const std::size_t length = textLength(source);
        if (length > INT32_MAX) {
            buffer.replace(static_cast<std::int64_t>(length)); // as when memory runs out
            return;
        }
        count = static_cast<std::int32_t>(length);
    }
    TextBuffer<Unit> old; // lives to the end: the source may lie in it
    if (buffer.holds(source)) buffer.swap(old);
    const std::int32_t needed = count > 0 ? convert(source, count, static_cast<Unit*>(nullptr), 0) : 0;
    if (!buffer.replace(needed) || needed == 0) return;
    convert(source, count, buffer.text(), needed);
}

} // namespace toolbelt
