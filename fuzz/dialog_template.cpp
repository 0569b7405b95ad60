// Dialog templates: a reader that trusts them as the system does never leaves the extent of one that is whole.
#include "Includes/cDlg/dialog_template.h"

#include <algorithm>

#include "fuzz/target.h"

namespace toolbelt::fuzz {
namespace {

// Reads without a limit. Behind the bytes it was given, in a block of exactly their size, a sanitizer stops it.
struct Trusting
{
    const std::uint8_t* start;
    std::size_t at = 0;

    std::uint32_t word()
    {
        at += 2;
        return start[at - 2] + 256u * start[at - 1];
    }
    void text()
    {
        while (word() != 0) {
        }
    }
    void name()
    {
        const std::uint32_t first = word();
        if (first == 0xFFFF)
            word();
        else if (first != 0)
            text();
    }
    void align() { at += (4 - at % 4) % 4; }
};

std::size_t endOf(const std::uint8_t* bytes, bool countsItself)
{
    Trusting reader{bytes};
    const bool extended = bytes[2] == 0xFF && bytes[3] == 0xFF;
    reader.at = extended ? 16 : 8;
    std::uint32_t controls = reader.word();
    reader.at = extended ? 26 : 18;
    reader.name();
    reader.name();
    reader.text();
    if ((bytes[extended ? 12 : 0] & 0x40) != 0 && reader.word() != 0x7FFF) {
        reader.at += extended ? 4 : 0;
        reader.text();
    }
    for (; controls > 0; --controls) {
        reader.align();
        reader.at += extended ? 24 : 18;
        reader.name();
        reader.name();
        const std::uint32_t data = reader.word();
        reader.at += countsItself && !extended ? (data < 2 ? 0 : data - 2) : data;
    }
    return reader.at;
}

const Target target("dialog_template", [](Input input) {
    Bytes bytes = input.take(4096);
    const std::size_t extent = templateExtent(addressOf(bytes), bytes.size());
    if (extent != 0) {
        Bytes padded = bytes;
        padded.resize(std::max(extent, bytes.size()));
        padded.shrink_to_fit();
        const auto [end, other] = std::minmax({endOf(padded.data(), false), endOf(padded.data(), true)});
        require(end <= bytes.size() && other == extent, "a whole template ends within its bytes, one way at least");
        const Bytes exact(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(end));
        const Bytes cut(exact.begin(), exact.end() - 1);
        require(templateExtent(exact.data(), end) != 0 && templateExtent(addressOf(cut), end - 1) == 0,
                "and not before");
    } else {
        // With zeros behind it, as far as eight controls reach, a refused one still ends outside its bytes.
        Bytes padded = bytes;
        padded.resize(bytes.size() + 10 * 0x10000);
        const bool extended = padded[2] == 0xFF && padded[3] == 0xFF, known = padded[0] == 1 && padded[1] == 0;
        const std::size_t count = extended ? 16 : 8;
        if (padded[count] <= 8 && padded[count + 1] == 0 && (known || !extended))
            require(std::min(endOf(padded.data(), false), endOf(padded.data(), true)) > bytes.size(),
                    "a whole template is read");
    }
    const Bytes before = bytes;
    const bool extended = bytes.size() >= 4 && bytes[2] == 0xFF && bytes[3] == 0xFF;
    const bool set = setTemplateRightToLeft(bytes.data(), bytes.size());
    require(set == (bytes.size() >= (extended ? 26u : 18u)), "the fixed part is there");
    const std::size_t place = (extended ? 8 : 4) + 2; // bit 22 lies in the third byte
    for (std::size_t i = 0; i < bytes.size(); ++i)
        require(bytes[i] == (set && i == place ? before[i] | 0x40 : before[i]), "one bit is set");
    require(templateExtent(addressOf(bytes), bytes.size()) == extent, "which changes no length");
});

} // namespace
} // namespace toolbelt::fuzz
