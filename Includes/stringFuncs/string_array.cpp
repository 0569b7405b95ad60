#include "Includes/stringFuncs/string_array.h"

#include <algorithm>
#include <cstring>

#include "Includes/stringFuncs/diagnostics.h"
#include "Includes/stringFuncs/text_buffer.h"
#include "Includes/stringFuncs/text_units.h"
#include "crypto/base/heap.h"

namespace toolbelt {

struct StringArrayLayout
{
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // a class with one table of slots has a plain layout here
    static_assert(sizeof(void*) != 4 || (sizeof(cStringArrayT) == 12 && offsetof(cStringArrayT, items_) == 4 &&
                                         offsetof(cStringArrayT, count_) == 8));
#pragma GCC diagnostic pop
};

namespace {

std::size_t lengthOf(const wchar_t* text, std::int32_t length)
{
    return length < 0 ? textLength(text) : lengthWithin(text, static_cast<std::size_t>(length));
}

// Whether the text is a quoted list with separators, and without one in front of its closing quote.
bool lacksListEnd(const wchar_t* text, std::size_t length)
{
    if (length < 3 || text[length - 1] != L'"' || equalUnits(text + length - 3, L"\\0\"", 3)) return false;
    for (std::size_t i = 1; i + 1 < length; ++i)
        if (text[i] == L'\\' && text[i + 1] == L'0') return true;
    return false;
}

wchar_t* copyText(const wchar_t* text, std::size_t length, bool endList)
{
    wchar_t* copy = cStringArrayT::AllocateText(endList ? length + 2 : length);
    if (copy == nullptr) return nullptr;
    std::memcpy(copy, text, length * sizeof(wchar_t));
    if (endList) std::memcpy(copy + length - 1, L"\\0\"", 3 * sizeof(wchar_t));
    return copy;
}

} // namespace

wchar_t* cStringArrayT::AllocateText(std::size_t length)
{
    std::int32_t capacity = 0;
    return allocateText<wchar_t>(static_cast<std::int64_t>(std::min<std::size_t>(length, INT32_MAX)) + 1, capacity);
}

void cStringArrayT::ReleaseText(wchar_t* text)
{
    if (text) heap::releaseSecret(text, textLength(text) * sizeof(wchar_t));
}

cStringArrayT::~cStringArrayT()
{
    cStringArrayT::RemoveAll();
}

void cStringArrayT::RemoveAll()
{
    while (count_ > 0) cStringArrayT::RemoveAt(count_ - 1);
    heap::release(items_);
    items_ = nullptr;
}

std::int32_t cStringArrayT::Add(const wchar_t* text)
{
    return AddCopy(text);
}

std::int32_t cStringArrayT::AddCopy(const wchar_t* text, std::int32_t length, bool terminateMultiString,
                                    std::int32_t* index)
{
    if (text == nullptr) return 0;
    const std::size_t units = lengthOf(text, length);
    wchar_t* copy = copyText(text, units, terminateMultiString && lacksListEnd(text, units));
    if (copy == nullptr) {
        RemoveAll();
        return 0;
    }
    if (append(copy, index)) return count_;
    ReleaseText(copy);
    return 0;
}

std::int32_t cStringArrayT::AddUnique(const wchar_t* text, std::int32_t length, std::int32_t* index)
{
    const std::int32_t found = Find(text, length);
    if (found < 0) return AddCopy(text, length, false, index);
    if (index) *index = found;
    return 0;
}

std::int32_t cStringArrayT::AddOwned(wchar_t* text, std::int32_t* index)
{
    return text && append(text, index) ? count_ : 0;
}

bool cStringArrayT::RemoveAt(std::int32_t index)
{
    if (index < 0 || index >= count_) return false;
    wchar_t* const removed = items_[index];
    for (std::int32_t i = index; i + 1 < count_; ++i) items_[i] = items_[i + 1];
    items_[--count_] = nullptr;
    ReleaseText(removed);
    return true;
}

const wchar_t* cStringArrayT::item(std::int32_t index) const
{
    return index >= 0 && index < count_ ? items_[index] : nullptr;
}

std::int32_t cStringArrayT::Find(const wchar_t* text, std::int32_t length) const
{
    if (text == nullptr) return -1;
    const std::size_t units = lengthOf(text, length);
    std::int32_t i = count_ - 1;
    while (i >= 0 && !equalUnits(items_[i], text, units)) --i;
    return i;
}

// One entry more, exactly; the size cannot wrap, since the entries there are already lie in memory.
bool cStringArrayT::append(wchar_t* text, std::int32_t* index)
{
    if (index) *index = count_;
    const std::size_t entries = static_cast<std::size_t>(count_);
    auto** const grown = static_cast<wchar_t**>(heap::allocate((entries + 1) * sizeof(wchar_t*)));
    if (grown == nullptr) {
        reportOutOfMemory();
        return false;
    }
    for (std::size_t i = 0; i < entries; ++i) grown[i] = items_[i];
    grown[entries] = text;
    heap::release(items_);
    items_ = grown;
    ++count_;
    return true;
}

} // namespace toolbelt
