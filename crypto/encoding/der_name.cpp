// Distinguished names (X.501, RFC 5280 4.1.2.4) as lists of attributes.
//
// A name is a SEQUENCE of SETs of attributes, each a SEQUENCE of an identifier and a string. The first attribute of
// each SET is kept. A node copies identifier and value, so a list outlives the bytes that it was read from.
#include "crypto/encoding/der.h"

#include <cstring>
#include <utility>

namespace toolbelt {
namespace {

void releaseNodes(NameAttribute* node)
{
    while (node) delete std::exchange(node, node->next);
}

bool isNameString(std::uint32_t tag)
{
    return tag == DER_UTF8_STRING || (tag >= DER_PRINTABLE_STRING && tag <= DER_IA5_STRING);
}

// Reads the first attribute of the SET at *data into a new node and moves on behind the SET.
Status readAttribute(NameAttribute& node, const std::uint8_t*& data, std::uint32_t& available)
{
    DerElement element;
    Status status = parseElement(element, data, available, &data, &available, DER_SET);
    if (status != STATUS_OK) return status;
    status = parseElement(element, element.content, element.contentLength, nullptr, nullptr, DER_SEQUENCE);
    if (status != STATUS_OK) return status;

    const std::uint8_t* next = element.content;
    std::uint32_t remaining = element.contentLength;
    status = parseElement(element, next, remaining);
    if (status != STATUS_OK) return status;
    if (element.tag != DER_OID) return DER_E_TAG;
    OidRecord oid;
    status = readOid(oid, next, remaining, &next, &remaining);
    if (status != STATUS_OK) return status;
    status = parseElement(element, next, remaining);
    if (status != STATUS_OK) return status;
    if (!isNameString(element.tag)) return DER_E_TAG;

    node.value = static_cast<char*>(heap::allocate(element.contentLength + 1));
    if (node.value == nullptr) return DER_E_MEMORY;
    std::memcpy(node.value, element.content, element.contentLength);
    node.value[element.contentLength] = '\0';
    node.valueLength = element.contentLength;
    node.tag = static_cast<std::uint8_t>(element.tag);
    node.oid = std::exchange(oid.text, nullptr);
    return STATUS_OK;
}

} // namespace

NameAttribute::~NameAttribute()
{
    heap::release(oid);
    heap::release(value);
}

NameList::~NameList()
{
    releaseNodes(head);
}

Status readName(NameList& name, const std::uint8_t* data, std::uint32_t available, const std::uint8_t** rest,
                std::uint32_t* restLength)
{
    releaseNodes(std::exchange(name.head, nullptr));
    DerElement outer;
    Status status = parseElement(outer, data, available, nullptr, nullptr, DER_SEQUENCE);
    if (status != STATUS_OK) return status;

    NameList built; // released when the name turns out bad half way
    const std::uint8_t* next = outer.content;
    std::uint32_t remaining = outer.contentLength;
    while (remaining != 0) {
        auto* node = new (std::nothrow) NameAttribute;
        if (node == nullptr) return DER_E_MEMORY;
        node->next = std::exchange(built.head, node);
        status = readAttribute(*node, next, remaining);
        if (status != STATUS_OK) return status;
    }
    std::swap(name.head, built.head);
    if (rest) *rest = data + outer.totalLength;
    if (restLength) *restLength = available - outer.totalLength;
    return STATUS_OK;
}

} // namespace toolbelt
