// der dump: the tree of elements of a DER file.
#include "crypto/encoding/der.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/documents.h"
#include "cli/key_facts.h"
#include "cli/results.h"
#include "cli/text.h"

namespace toolbelt::cli {
namespace {

constexpr unsigned MAX_DEPTH = 64;
constexpr std::size_t SHOWN_OCTETS = 32;
constexpr std::uint32_t CONSTRUCTED = 0x20;
constexpr std::uint32_t CLASS_MASK = 0xC0;
constexpr std::uint32_t END_OF_CONTENTS = 0;

constexpr const char* universalNames[31] = {
    "END-OF-CONTENTS",   "BOOLEAN",          "INTEGER",       "BIT STRING",     "OCTET STRING",    "NULL",
    "OBJECT IDENTIFIER", "ObjectDescriptor", "EXTERNAL",      "REAL",           "ENUMERATED",      "EMBEDDED PDV",
    "UTF8String",        "RELATIVE-OID",     "TIME",          nullptr,          "SEQUENCE",        "SET",
    "NumericString",     "PrintableString",  "T61String",     "VideotexString", "IA5String",       "UTCTime",
    "GeneralizedTime",   "GraphicString",    "VisibleString", "GeneralString",  "UniversalString", "CHARACTER STRING",
    "BMPString"};

std::string tagText(std::uint32_t tag)
{
    const std::uint32_t number = tag & 31;
    if ((tag & CLASS_MASK) == 0 && number < 31 && universalNames[number]) return universalNames[number];
    constexpr const char* classes[] = {"UNIVERSAL ", "APPLICATION ", "", "PRIVATE "};
    return std::string("[") + classes[tag >> 6] + std::to_string(number) + "]";
}

std::string cutHex(const std::uint8_t* bytes, std::uint32_t size)
{
    return toHex(bytes, size, SHOWN_OCTETS);
}

// Decimal up to eight octets, two's complement; the octets in hex beyond.
std::string integerText(const DerElement& element)
{
    if (element.contentLength == 0 || element.contentLength > 8) return toHex(element.content, element.contentLength);
    std::uint64_t value = element.content[0] & 0x80 ? ~std::uint64_t(0) : 0;
    for (std::uint32_t i = 0; i < element.contentLength; ++i) value = value << 8 | element.content[i];
    return std::to_string(static_cast<std::int64_t>(value));
}

std::string oidText(const DerElement& element)
{
    char dotted[DER_OID_TEXT_SIZE];
    if (element.contentLength == 0 || formatOid(dotted, element.content, element.contentLength) != STATUS_OK)
        return cutHex(element.content, element.contentLength);
    const std::string name = oidName(dotted);
    return name == dotted ? name : std::string(dotted) + " " + name;
}

std::string quotedText(const DerElement& element, Charset charset)
{
    return '"' + readable(element.content, element.contentLength, charset, "\"") + '"';
}

std::string timeElementText(const DerElement& element)
{
    DerTime time;
    return readTime(time, element) == STATUS_OK ? timeText(time) : quotedText(element, Charset::latin1);
}

std::string bitStringText(const DerElement& element)
{
    if (element.contentLength == 0) return "";
    const unsigned unused = element.content[0];
    return (unused == 0 ? "" : std::to_string(unused) + " unused bits, ") +
           cutHex(element.content + 1, element.contentLength - 1);
}

bool isPrintable(const DerElement& element)
{
    for (std::uint32_t i = 0; i < element.contentLength; ++i)
        if (element.content[i] < 0x20 || element.content[i] > 0x7E) return false;
    return element.contentLength > 0;
}

std::string primitiveText(const DerElement& element)
{
    switch (element.tag) {
    case DER_BOOLEAN:
        if (element.contentLength != 1) break;
        return element.content[0] ? "true" : "false";
    case DER_INTEGER:
    case 10:
        return integerText(element);
    case DER_BIT_STRING:
        return bitStringText(element);
    case DER_OID:
        return oidText(element);
    case DER_UTF8_STRING:
    case 18:
    case DER_PRINTABLE_STRING:
    case DER_IA5_STRING:
    case 26:
        return quotedText(element, Charset::utf8);
    case DER_T61_STRING:
    case DER_VIDEOTEX_STRING:
    case 27:
        return quotedText(element, Charset::latin1);
    case 30:
        return quotedText(element, Charset::utf16);
    case DER_UTC_TIME:
    case DER_GENERALIZED_TIME:
        return timeElementText(element);
    }
    const bool isText = (element.tag & CLASS_MASK) != 0 && isPrintable(element);
    return isText ? quotedText(element, Charset::latin1) : cutHex(element.content, element.contentLength);
}

// Whether the bytes are one element of a universal type, and so is all that is constructed in it: a string of such
// bytes is shown as what it holds.
bool holdsElement(const std::uint8_t* bytes, std::uint32_t size, unsigned depth)
{
    DerElement element;
    std::uint32_t left = 0;
    if (parseElement(element, bytes, size, nullptr, &left) != STATUS_OK || left != 0) return false;
    const std::uint32_t number = element.tag & 31;
    if ((element.tag & CLASS_MASK) != 0 || number == END_OF_CONTENTS || number == 31 || !universalNames[number])
        return false;
    if (!(element.tag & CONSTRUCTED)) return true;
    const std::uint8_t* at = element.content;
    for (left = element.contentLength; left > 0;) {
        DerElement inner;
        if (depth >= MAX_DEPTH || parseElement(inner, at, left, &at, &left) != STATUS_OK) return false;
        if ((inner.tag & (CLASS_MASK | CONSTRUCTED)) == CONSTRUCTED &&
            !holdsElement(inner.start, inner.totalLength, depth + 1))
            return false;
    }
    return true;
}

class Dump
{
public:
    Dump(const std::string& file, const Document& document) : file_(file), start_(document.bytes.data()) {}

    // Prints the elements that fill the bytes, or for JSON adds them to the list. Where they end being elements, the
    // command ends.
    void walk(const std::uint8_t* at, std::uint32_t left, unsigned depth, Fact& list) const
    {
        while (left > 0) {
            DerElement element;
            const std::uint8_t* here = at;
            const Status status = parseElement(element, at, left, &at, &left);
            if (status != STATUS_OK)
                throw Failure(
                    file_, "at offset " + std::to_string(here - start_) + ": " + withStatus(statusText(status), status),
                    EXIT_INPUT);
            show(element, depth, list);
        }
    }

private:
    void show(const DerElement& element, unsigned depth, Fact& list) const
    {
        const bool isConstructed = (element.tag & CONSTRUCTED) != 0;
        // What a string holds starts behind a BIT STRING's octet of unused bits.
        const std::uint32_t skipped =
            element.tag == DER_BIT_STRING && element.contentLength > 0 && element.content[0] == 0 ? 1 : 0;
        const bool isString = element.tag == DER_OCTET_STRING || skipped == 1;
        const std::uint8_t* inside = element.content + skipped;
        const std::uint32_t insideLength = element.contentLength - skipped;
        const bool isNested = isConstructed || (isString && holdsElement(inside, insideLength, depth));

        std::string value = !isNested ? primitiveText(element) : isConstructed ? "" : "holding";
        if (element.indefinite) value = "of indefinite length";
        if (isNested && depth >= MAX_DEPTH) value = "nested too deep, not shown";
        const std::size_t header = static_cast<std::size_t>(element.content - element.start);
        const std::size_t offset = static_cast<std::size_t>(element.start - start_);
        Fact inner{"elements", "", {}, Fact::Form::list};
        if (!usesJson()) {
            char numbers[64];
            std::snprintf(numbers, sizeof numbers, "%8u %2u %8u  ", static_cast<unsigned>(offset),
                          static_cast<unsigned>(header), static_cast<unsigned>(element.contentLength));
            printLine(numbers + std::string(2 * depth, ' ') + tagText(element.tag) + (value.empty() ? "" : " ") +
                      value);
        }
        if (isNested && depth < MAX_DEPTH) walk(inside, insideLength, depth + 1, inner);
        if (usesJson()) {
            Fact fact{"", "", {numberFact("offset", offset), numberFact("header", header)}};
            fact.parts.push_back(numberFact("length", element.contentLength));
            fact.parts.push_back({"tag", tagText(element.tag)});
            if (!value.empty()) fact.parts.push_back({"value", value});
            if (isNested) fact.parts.push_back(std::move(inner));
            list.parts.push_back(std::move(fact));
        }
    }

    const std::string& file_;
    const std::uint8_t* start_;
};

} // namespace

Action prepareDerDump(Parser& parser)
{
    const auto file = std::make_shared<std::string>();
    parser.option("FILE", *file, "DER, or PEM of any kind; of several blocks each is shown").required().value("");
    parser.footer(
        "A line for each element: offset, length of the header, length of the content, tag and value. What OCTET and\n"
        "BIT STRINGs hold is shown too where it is DER. Up to 64 levels.\n\n"
        "Example: toolbelt der dump server.pem");
    return [file]() {
        for (const Document& document : readDocuments(*file)) {
            check(*file, document.status);
            if (document.bytes.empty()) throw libraryFailure(*file, DER_E_LENGTH);
            const std::string label = readable(reinterpret_cast<const std::uint8_t*>(document.label.data()),
                                               document.label.size(), Charset::utf8);
            if (!label.empty() && !usesJson()) printLine("-----BEGIN " + label + "-----");
            Fact elements{"elements", "", {}, Fact::Form::list};
            Dump(*file, document).walk(document.bytes.data(), size32(document.bytes), 0, elements);
            if (usesJson()) printResult({"label", label, {std::move(elements)}});
        }
        return EXIT_DONE;
    };
}

} // namespace toolbelt::cli
