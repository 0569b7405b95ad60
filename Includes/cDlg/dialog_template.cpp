#include "Includes/cDlg/dialog_template.h"

#include "crypto/base/bytes.h"

namespace toolbelt {
namespace {

constexpr std::uint16_t EXTENDED = 0xFFFF;     // in the second word
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

class Reader
{
public:
    Reader(const std::uint8_t* bytes, std::size_t size) : bytes_(bytes), size_(size) {}

    bool skip(std::size_t count)
    {
        if (size_ - at_ < count) return false;
        at_ += count;
        return true;
    }
    bool word(std::uint16_t& value)
    {
        if (size_ - at_ < 2) return false;
        value = static_cast<std::uint16_t>(bytes_[at_] | bytes_[at_ + 1] << 8);
        at_ += 2;
        return true;
    }
    bool text()
    {
        for (std::uint16_t unit = 1; unit != 0;)
            if (!word(unit)) return false;
        return true;
    }
    // Nothing, a number or a name.
    bool name()
    {
        std::uint16_t first = 0;
        if (!word(first)) return false;
        if (first == ORDINAL) return skip(2);
        return first == 0 || text();
    }
    bool align() { return skip((4 - at_ % 4) % 4); }

private:
    const std::uint8_t* bytes_;
    std::size_t size_;
    std::size_t at_ = 0;
};

// Null when the fixed part is cut off.
const Form* formOf(const std::uint8_t* bytes, std::size_t size)
{
    if (bytes == nullptr || size < 4) return nullptr;
    const Form& form = load32le(bytes) >> 16 == EXTENDED ? EXTENDED_FORM : CLASSIC_FORM;
    return size < form.fixedPart ? nullptr : &form;
}

// Whether that many controls follow, when the count of a control's data counts so many bytes of itself.
bool holdsControls(Reader reader, const Form& form, int controls, std::uint16_t counted)
{
    for (; controls > 0; --controls) {
        std::uint16_t data = 0;
        if (!reader.align() || !reader.skip(form.controlPart) || !reader.name() || !reader.name() ||
            !reader.word(data) || !reader.skip(data < counted ? 0u : data - counted))
            return false;
    }
    return true;
}

} // namespace

bool isWholeTemplate(const std::uint8_t* bytes, std::size_t size) noexcept
{
    const Form* const form = formOf(bytes, size);
    if (form == nullptr) return false;
    Reader reader(bytes, size);
    if (!reader.skip(form->fixedPart) || !reader.name() || !reader.name() || !reader.text()) return false;
    if ((load32le(bytes + form->style) & STYLE_FONT) != 0) {
        std::uint16_t points = 0;
        if (!reader.word(points)) return false;
        if (points != MESSAGE_FONT && (!reader.skip(form->fontFacts) || !reader.text())) return false;
    }
    const int controls = bytes[form->controlCount] | bytes[form->controlCount + 1] << 8;
    // Whether a classic control's count counts itself is seen both ways: the template has to be whole either way.
    return holdsControls(reader, *form, controls, 0) &&
           (form != &CLASSIC_FORM || holdsControls(reader, *form, controls, 2));
}

bool setTemplateRightToLeft(std::uint8_t* bytes, std::size_t size) noexcept
{
    const Form* const form = formOf(bytes, size);
    if (form == nullptr) return false;
    bytes[form->extendedStyle + 2] |= TEMPLATE_RIGHT_TO_LEFT >> 16;
    return true;
}

} // namespace toolbelt
