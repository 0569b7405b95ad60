// cStringArrayT: an array of individually owned, zero-terminated texts of 16-bit units, for lists of tens of items:
// each add copies the array of pointers. A text that is removed is wiped up to its terminator, then freed.
//
// A length counts units and ends early at a zero unit, since that ends every item; a negative length means up to the
// terminator. A null text is refused: nothing happens. When memory runs out "Assertion! Error in memory allocation!"
// goes to the debug channel, and what the operation says happens to the array.
#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/base/export.h"

namespace toolbelt {

class TB_API cStringArrayT
{
public:
    cStringArrayT() noexcept = default;
    cStringArrayT(const cStringArrayT&) = delete;
    cStringArrayT& operator=(const cStringArrayT&) = delete;

    // The virtual operations, in slot order. Those that add return the new count, or 0; an index is the item's own.
    // An array that could not copy a text is emptied, not left half-filled; one that could not grow stays as it is.
    virtual void RemoveAll();
    virtual std::int32_t Add(const wchar_t* text);
    // With the flag, a quoted list whose items are separated by a backslash and the digit zero gets that separator in
    // front of its closing quote too, if it is not there yet.
    virtual std::int32_t AddCopy(const wchar_t* text, std::int32_t length = -1, bool terminateMultiString = false,
                                 std::int32_t* index = nullptr);
    // Adds the text only when Find has none like it, else returns 0 and puts out the index found. As Find compares
    // length units, an item abc blocks a later ab.
    virtual std::int32_t AddUnique(const wchar_t* text, std::int32_t length = -1, std::int32_t* index = nullptr);
    // Takes over a text from AllocateText. On failure the text stays the caller's, and the array as it is.
    virtual std::int32_t AddOwned(wchar_t* text, std::int32_t* index = nullptr);
    // False when there is no such item.
    virtual bool RemoveAt(std::int32_t index);
    virtual ~cStringArrayT();

    std::int32_t count() const { return count_; }
    // The text at an index from 0 to count() - 1; null for any other.
    const wchar_t* item(std::int32_t index) const;
    // The last item whose first length units are those of the text (case counts), or -1.
    std::int32_t Find(const wchar_t* text, std::int32_t length = -1) const;

    // A zeroed text with room for length units and a terminator, a multiple of 4096 bytes, or null. It is for AddOwned,
    // or for ReleaseText, which wipes up to the terminator and frees (null is ignored).
    static wchar_t* AllocateText(std::size_t length);
    static void ReleaseText(wchar_t* text);

private:
    bool append(wchar_t* text, std::int32_t* index);

    wchar_t** items_ = nullptr;
    std::int32_t count_ = 0;

    friend struct StringArrayLayout;
};

} // namespace toolbelt
