#include "Includes/stringFuncs/text_buffer.h"

#include <cstring>
#include <limits>

#include "Includes/stringFuncs/diagnostics.h"
#include "crypto/base/heap.h"

namespace toolbelt {
namespace {

constexpr std::int64_t allocationStep = 4096;

// Negative counts mean up to the terminator, which a null source has at once. In 64 bits, so that no sum overflows.
template <typename Unit>
std::int64_t unitsToCopy(const Unit* source, std::int32_t count) noexcept
{
    if (count >= 0) return count;
    return source ? static_cast<std::int64_t>(textLength(source)) : 0;
}

} // namespace

template <typename Unit>
Unit* allocateText(std::int64_t units, std::int32_t& capacity) noexcept
{
    constexpr std::int64_t size = sizeof(Unit);
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    Unit* block = nullptr;
    if (units <= most - allocationStep) {
        const std::int64_t bytes = (units * size + allocationStep - 1) / allocationStep * allocationStep;
        block = static_cast<Unit*>(heap::allocate(static_cast<std::size_t>(bytes)));
        if (block) {
            std::memset(block, 0, static_cast<std::size_t>(bytes));
            capacity = static_cast<std::int32_t>(bytes / size);
        }
    }
    if (block == nullptr) reportOutOfMemory();
    return block;
}

template <typename Unit>
std::int32_t TextBuffer<Unit>::append(const Unit* source, std::int32_t count) noexcept
{
    const std::int64_t added = unitsToCopy(source, count);
    const std::int64_t need = length_ + added + 1;
    TextBuffer old; // lives to the end: the source may lie in it
    if (need >= capacity_) {
        TextBuffer grown;
        grown.text_ = allocateText<Unit>(need, grown.capacity_);
        if (grown.text_ == nullptr) return 0;
        if (length_) std::memcpy(grown.text_, text_, static_cast<std::size_t>(length_) * sizeof(Unit));
        grown.length_ = length_;
        swap(grown);
        old.swap(grown);
    }
    if (source)
        std::memmove(text_ + length_, source, static_cast<std::size_t>(added) * sizeof(Unit));
    else
        std::memset(text_ + length_, 0, static_cast<std::size_t>(added) * sizeof(Unit));
    length_ = static_cast<std::int32_t>(need - 1);
    text_[length_] = 0;
    return static_cast<std::int32_t>(added + 1);
}

template <typename Unit>
std::int32_t TextBuffer<Unit>::setLength(std::int32_t n) noexcept
{
    if (n < 0) {
        reportAssertion(L"n >= 0", L"text_buffer.cpp", __LINE__);
        return 0;
    }
    if (length_ < n) {
        if (append(nullptr, n - length_) == 0) return 0;
    } else if (length_ > n) {
        wipe(text_ + n, static_cast<std::size_t>(length_ - n) * sizeof(Unit));
        length_ = n;
    }
    return length_ + 1;
}

template <typename Unit>
void TextBuffer<Unit>::fixLength() noexcept
{
    if (text_ == nullptr) return;
    std::int32_t n = 0;
    while (n < capacity_ - 1 && text_[n] != 0) ++n;
    // The caller had the whole buffer: what was written behind the old end is text as well, or rubbish to wipe.
    length_ = capacity_ - 1;
    text_[length_] = 0;
    setLength(n);
}

template <typename Unit>
std::int32_t TextBuffer<Unit>::assign(const Unit* source, std::int32_t count) noexcept
{
    const std::int64_t added = unitsToCopy(source, count);
    if (added + 1 >= capacity_) {
        TextBuffer fresh;
        const std::int32_t written = fresh.append(source, count);
        if (written) swap(fresh);
        return written;
    }
    const auto n = static_cast<std::int32_t>(added);
    if (source)
        std::memmove(text_, source, static_cast<std::size_t>(n) * sizeof(Unit));
    else
        std::memset(text_, 0, static_cast<std::size_t>(n) * sizeof(Unit));
    if (length_ < n) length_ = n;
    text_[length_] = 0;
    return setLength(n);
}

template <typename Unit>
bool TextBuffer<Unit>::replace(std::int64_t n) noexcept
{
    const std::int64_t need = n + 1;
    if (capacity_ < need) {
        clear();
        text_ = allocateText<Unit>(need, capacity_);
        if (text_ == nullptr) return false;
    } else {
        wipe(text_, static_cast<std::size_t>(length_) * sizeof(Unit));
    }
    length_ = static_cast<std::int32_t>(n);
    text_[length_] = 0; // the caller may have written behind the old end
    return true;
}

template <typename Unit>
void TextBuffer<Unit>::clear() noexcept
{
    heap::releaseSecret(text_, static_cast<std::size_t>(capacity_) * sizeof(Unit));
    text_ = nullptr;
    capacity_ = 0;
    length_ = 0;
}

template <typename Unit>
bool TextBuffer<Unit>::holds(const void* address) const noexcept
{
    const auto begin = reinterpret_cast<std::uintptr_t>(text_);
    const auto at = reinterpret_cast<std::uintptr_t>(address);
    return text_ != nullptr && at >= begin && at - begin < static_cast<std::size_t>(capacity_) * sizeof(Unit);
}

template wchar_t* allocateText<wchar_t>(std::int64_t, std::int32_t&) noexcept;
template char* allocateText<char>(std::int64_t, std::int32_t&) noexcept;
template class TextBuffer<wchar_t>;
template class TextBuffer<char>;

} // namespace toolbelt
