// cStringBuffer: a text and a place in it, read line by line. A line ends with CR LF, LF or CR, which are not part of
// it, or with the text; blank lines are lines.
#pragma once

#include <cstdint>

#include "Includes/stringFuncs/wcs.h"

namespace toolbelt {

class TB_API cStringBuffer
{
public:
    cStringBuffer() noexcept = default;

    // Makes a copy of the text (count negative: up to the terminator) and starts at its beginning. False when memory
    // runs out: the buffer is as it was.
    bool Assign(const wchar_t* text, std::int32_t count = -1);
    // The same without a copy: the text changes hands, the string gets what was in the buffer.
    void Swap(cWCS& text);
    void Restart() { position_ = 0; }

    // The next line, as a place in this buffer's text; not zero-terminated. False when there is none.
    bool ReadLine(const wchar_t** line, std::int32_t* length);
    // Copies the next line, at most size - 1 units of it, and fills the rest of the size units with zeros. False when
    // there is no line: then all are zeros.
    bool Read(wchar_t* destination, std::int32_t size);
    // Goes from the beginning to the first line that begins with the key (case counts) and puts it into the result,
    // with skipKey what follows the key. False when no line does, for a null key, or when memory runs out: the result
    // is as it was.
    bool FindValue(cWCS& result, const wchar_t* key, bool skipKey);

private:
    cWCS text_;
    std::int32_t position_ = 0; // from 0 to the text's length
};

} // namespace toolbelt
