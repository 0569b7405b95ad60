// Bytes of text files: recognised and decoded as the model does.
#include "Includes/stringFuncs/text_decode.h"

#include <string>

#include "fuzz/target.h"

namespace toolbelt::fuzz {
namespace {

// UTF-8 by the book; false when it is malformed, where only the number of replacements may differ between systems.
bool decodeUtf8(const Bytes& bytes, std::size_t at, std::u16string& text)
{
    while (at < bytes.size()) {
        const std::uint32_t lead = bytes[at++];
        const std::uint32_t more = lead < 0x80   ? 0
                                   : lead < 0xC2 ? 9
                                   : lead < 0xE0 ? 1
                                   : lead < 0xF0 ? 2
                                   : lead < 0xF5 ? 3
                                                 : 9;
        if (more == 9 || bytes.size() - at < more) return false;
        std::uint32_t point = more == 0 ? lead : lead & (0x3Fu >> more);
        for (std::uint32_t i = 0; i < more; ++i) {
            if ((bytes[at] & 0xC0) != 0x80) return false;
            point = point << 6 | (bytes[at++] & 0x3Fu);
        }
        constexpr std::uint32_t least[] = {0, 0x80, 0x800, 0x10000};
        if (point < least[more] || point > 0x10FFFF || (point >= 0xD800 && point < 0xE000)) return false;
        if (point >= 0x10000) text += static_cast<char16_t>(0xD7C0 + (point >> 10));
        text += static_cast<char16_t>(point >= 0x10000 ? 0xDC00 + (point & 0x3FF) : point);
    }
    return true;
}

const Target target("text_decode", [](Input input) {
    const Bytes bytes = input.take(4096);
    const auto begins = [&](std::initializer_list<int> mark) {
        std::size_t i = 0;
        for (const int octet : mark)
            if (i == bytes.size() || bytes[i++] != octet) return false;
        return true;
    };
    const bool two = bytes.size() >= 2;
    RecognisedText expected = {TextEncoding::multibyte, 0};
    if (begins({0xFF, 0xFE}))
        expected = {TextEncoding::utf16le, 2};
    else if (begins({0xFE, 0xFF}))
        expected = {TextEncoding::utf16be, 2};
    else if (begins({0xEF, 0xBB, 0xBF}))
        expected = {TextEncoding::utf8, 3};
    else if (two && bytes[0] == 0)
        expected = {TextEncoding::utf16be, 0};
    else if (two && bytes[1] == 0)
        expected = {TextEncoding::utf16le, 0};

    const RecognisedText found = recogniseText(addressOf(bytes), bytes.size());
    require(found.encoding == expected.encoding && found.markSize == expected.markSize, "the encoding");
    cWCS text;
    TextEncoding encoding{-1};
    require(decodeText(text, addressOf(bytes), bytes.size(), &encoding) && encoding == expected.encoding, "a text");
    require(text.text() && text.text()[text.length()] == 0, "with its end");
    std::u16string units;
    const bool wide = encoding == TextEncoding::utf16le || encoding == TextEncoding::utf16be;
    const int high = encoding == TextEncoding::utf16le;
    for (std::size_t at = expected.markSize; wide && at + 2 <= bytes.size(); at += 2)
        units += static_cast<char16_t>(bytes[at + static_cast<std::size_t>(high)] << 8 |
                                       bytes[at + static_cast<std::size_t>(!high)]);
    const bool known = wide || decodeUtf8(bytes, expected.markSize, units);
    const std::u16string decoded(text.text(), text.text() + text.length());
    require(known ? decoded == units : decoded.find(u'\xFFFD') != decoded.npos, "the model's text");
});

} // namespace
} // namespace toolbelt::fuzz
