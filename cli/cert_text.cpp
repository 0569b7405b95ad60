// Names in certificates, and what readers of both halves of cert show need.
#include "cli/cert_text.h"

#include "cli/key_facts.h"
#include "cli/text.h"

namespace toolbelt::cli {
namespace {

constexpr std::uint32_t DER_BMP_STRING = 30;
constexpr char NAME_SPECIALS[] = ",+\"<>;"; // as in RFC 4514

std::string attributeName(const char* oid)
{
    const OidRow* row = nullptr;
    const bool known = lookupOid(nullptr, 0, oid, &row) != 0;
    return known && row->shortName ? row->shortName : oidName(oid);
}

std::string attributeText(const DerElement& attribute)
{
    OidRecord oid;
    DerElement value;
    const std::uint8_t* at = nullptr;
    std::uint32_t left = 0;
    if (readOid(oid, attribute.content, attribute.contentLength, &at, &left) != STATUS_OK ||
        parseElement(value, at, left) != STATUS_OK)
        return "malformed";
    const bool isLatin = value.tag == DER_T61_STRING || value.tag == DER_VIDEOTEX_STRING;
    const Charset charset = isLatin ? Charset::latin1 : value.tag == DER_BMP_STRING ? Charset::utf16 : Charset::utf8;
    return attributeName(oid.text) + "=" + readable(value.content, value.contentLength, charset, NAME_SPECIALS);
}

} // namespace

bool readElements(std::vector<DerElement>& elements, const DerElement& parent)
{
    const std::uint8_t* at = parent.content;
    for (std::uint32_t left = parent.contentLength; left > 0;)
        if (parseElement(elements.emplace_back(), at, left, &at, &left) != STATUS_OK) return false;
    return true;
}

// The library's list of a name holds the first attribute of each SET; here nothing that
// the certificate says may go unseen.
std::string nameText(const DerElement& name)
{
    std::vector<DerElement> sets;
    if (!readElements(sets, name)) return "malformed";
    std::string text;
    for (const DerElement& set : sets) {
        std::vector<DerElement> attributes;
        if (!readElements(attributes, set)) return "malformed";
        for (const DerElement& attribute : attributes)
            text += (text.empty() ? "" : &attribute == attributes.data() ? ", " : " + ") + attributeText(attribute);
    }
    return text;
}

std::string octetsText(const DerElement& element)
{
    return toHex(element.content, element.contentLength, SHOWN_OCTETS);
}

} // namespace toolbelt::cli
