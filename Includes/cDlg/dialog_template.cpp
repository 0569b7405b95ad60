#include "Includes/cDlg/dialog_template.h"

#include <algorithm>

#include "crypto/base/bytes.h"

namespace toolbelt {
namespace {

constexpr std::uint16_t EXTENDED = 0xFFFF;     // in the second word
constexpr std::uint16_t EXTENDED_VERSION = 1;  // in the first word then
constexpr std::uint16_t ORDINAL = 0xFFFF;      // in front of a number that stands for a name
constexpr std::uint32_t STYLE_FONT = 0x40;     // DS_SETFONT: the template names its font
constexpr std::uint16_t MESSAGE_FONT = 0x7FFF; // in place of a size in points; nothing follows

struct Form
{
    std::size_t fixedPart; // bytes before the menu
    std::size_t style;     // offsets
    std::size_t extendedStyle;
    std::size_t controlCount;
    std::size_t fontFacts;   // bytes between the font's size and its name
    std::size_t controlPart; // bytes of a control before its class
};
constexpr Form CLASSIC_FORM = {18, 0, 4, 8, 0, 18};
constexpr Form EXTENDED_FORM = {26, 12, 8, 16, 4, 24};

// Reads the template and, behind its end, zeros. There every text is empty and no control has data, so that a control
// takes 32 bytes at most and nothing leads further behind the end than one count of data and 65,535 controls.
class Reader
{
public:
    Reader(const std::uint8_t* bytes, std::size_t size) : bytes_(bytes), size_(size) {}

    std::size_t at() const { return at_; }
    void skip(std::size_t count) { at_ += count; }
    std::uint16_t word()
    {
        const unsigned low = byte(at_), high = byte(at_ + 1);
        at_ += 2;
        return static_cast<std::uint16_t>(low | high << 8);
    }
    void text()
    {
        while (word() != 0) {
        }
    }
    // Nothing, a number or a name.
    void name()
    {
        const std::uint16_t first = word();
        if (first == ORDINAL)
            skip(2);
        else if (first != 0)
            text();
    }
    void align() { skip((4 - at_ % 4) % 4); }

private:
    unsigned byte(std::size_t place) const { return place < size_ ? bytes_[place] : 0; }

    const std::uint8_t* bytes_;
    std::size_t size_;
    std::size_t at_ = 0;
};

// Null when the fixed part is cut off, or an extended template is of a version that nobody has described.
const Form* formOf(const std::uint8_t* bytes, std::size_t size)
{
    if (bytes == nullptr || size < 4) return nullptr;
    const std::uint32_t start = load32le(bytes);
    if (start >> 16 == EXTENDED && start % 0x10000 != EXTENDED_VERSION) return nullptr;
    const Form& form = start >> 16 == EXTENDED ? EXTENDED_FORM : CLASSIC_FORM;
    return size < form.fixedPart ? nullptr : &form;
}

// Where that many controls end, when the count of a control's data counts so many bytes of itself.
std::size_t endOfControls(Reader reader, const Form& form, unsigned controls, unsigned counted)
{
    for (; controls > 0; --controls) {
        reader.align();
        reader.skip(form.controlPart);
        reader.name();
        reader.name();
        const unsigned data = reader.word();
        reader.skip(data < counted ? 0 : data - counted);
    }
    return reader.at();
}

} // namespace

std::size_t templateExtent(const std::uint8_t* bytes, std::size_t size) noexcept
{
    const Form* const form = formOf(bytes, size);
    if (form == nullptr || size > LARGEST_TEMPLATE) return 0;
    Reader reader(bytes, size);
    reader.skip(form->fixedPart);
    reader.name();
    reader.name();
    reader.text();
    if ((load32le(bytes + form->style) & STYLE_FONT) != 0 && reader.word() != MESSAGE_FONT) {
        reader.skip(form->fontFacts);
        reader.text();
    }
    const unsigned controls = bytes[form->controlCount] | bytes[form->controlCount + 1] << 8;
    const std::size_t one = endOfControls(reader, *form, controls, 0);
    const std::size_t other = form == &CLASSIC_FORM ? endOfControls(reader, *form, controls, 2) : one;
    return std::min(one, other) <= size ? std::max(one, other) : 0;
}

bool setTemplateRightToLeft(std::uint8_t* bytes, std::size_t size) noexcept
{
    const Form* const form = formOf(bytes, size);
    if (form == nullptr) return false;
    bytes[form->extendedStyle + 2] |= TEMPLATE_RIGHT_TO_LEFT >> 16;
    return true;
}

} // namespace toolbelt
