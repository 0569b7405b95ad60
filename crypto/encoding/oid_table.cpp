// OidTable: the tree is laid out by the compiler from the list of oid_rows.h, and lookups walk it.
//
// Roots stand in OidTable itself, all other rows in one array, level by level, so that the children of a row are
// neighbours. Arc texts are the tails of the list's identifiers.
#include "crypto/encoding/oid_table.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

#include "crypto/encoding/oid_rows.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t NO_PARENT = UINT32_MAX;
constexpr std::uint32_t CHILD_ROWS = OID_ROW_COUNT - OID_ROOT_COUNT;
static_assert(std::size(oidEntries) == OID_ROW_COUNT);

// Whether text is prefix, or prefix and a dot and more: whole components are compared.
constexpr bool startsWithComponents(std::string_view text, std::string_view prefix)
{
    return text.starts_with(prefix) && (text.size() == prefix.size() || text[prefix.size()] == '.');
}

struct Layout
{
    std::uint32_t entry[OID_ROW_COUNT] = {};      // of each place in the tree; the roots come first
    std::uint32_t parent[OID_ROW_COUNT] = {};     // of each entry
    std::uint32_t firstChild[OID_ROW_COUNT] = {}; // place of each entry's first child
    std::uint32_t childCount[OID_ROW_COUNT] = {};
    std::uint32_t rootCount = 0;
};

constexpr Layout arrange()
{
    Layout layout;
    std::uint32_t places = 0;
    for (std::uint32_t i = 0; i < OID_ROW_COUNT; ++i) {
        std::uint32_t parent = i; // the nearest entry before that this one continues is the deepest
        while (parent > 0 && !startsWithComponents(oidEntries[i].oid, oidEntries[parent - 1].oid)) --parent;
        layout.parent[i] = parent > 0 ? parent - 1 : NO_PARENT;
        if (parent == 0) layout.entry[places++] = i;
    }
    layout.rootCount = places;
    for (std::uint32_t place = 0; place < places; ++place) {
        const std::uint32_t above = layout.entry[place];
        layout.firstChild[above] = places;
        for (std::uint32_t i = above + 1; i < OID_ROW_COUNT; ++i)
            if (layout.parent[i] == above) layout.entry[places++] = i;
        layout.childCount[above] = places - layout.firstChild[above];
    }
    return layout;
}

constexpr Layout layout = arrange();
static_assert(layout.rootCount == OID_ROOT_COUNT);

constexpr const char* arcOf(std::uint32_t entry)
{
    const char* oid = oidEntries[entry].oid;
    if (layout.parent[entry] == NO_PARENT) return oid;
    return oid + std::string_view(oidEntries[layout.parent[entry]].oid).size() + 1;
}

// Every row has a long name, and all but the roots add one component to their parent. (Of an entry that is there twice
// the second would be taken for the first one's child.)
constexpr bool entriesAreSound()
{
    for (std::uint32_t i = 0; i < OID_ROW_COUNT; ++i) {
        const std::uint32_t parent = layout.parent[i];
        if (oidEntries[i].longName == nullptr) return false;
        if (parent == NO_PARENT) continue;
        if (std::string_view(oidEntries[i].oid) == oidEntries[parent].oid) return false;
        const std::string_view arc = arcOf(i);
        if (arc.empty() || arc.find('.') != arc.npos) return false;
    }
    return true;
}
static_assert(entriesAreSound());

struct ChildRows
{
    OidRow row[CHILD_ROWS];
};
extern const ChildRows childRows;

constexpr OidRow makeRow(std::uint32_t place)
{
    const std::uint32_t index = layout.entry[place];
    const OidEntry& entry = oidEntries[index];
    const std::uint32_t children = layout.childCount[index];
    return {children ? childRows.row + (layout.firstChild[index] - OID_ROOT_COUNT) : nullptr,
            children,
            arcOf(index),
            entry.shortName,
            entry.longName,
            entry.digest,
            OID_NONE,
            entry.publicKey,
            OID_NONE};
}

constexpr ChildRows makeChildRows()
{
    ChildRows rows{};
    for (std::uint32_t i = 0; i < CHILD_ROWS; ++i) rows.row[i] = makeRow(OID_ROOT_COUNT + i);
    return rows;
}

constexpr ChildRows childRows = makeChildRows();

} // namespace

constexpr OidRow OidTable[OID_ROOT_COUNT] = {makeRow(0),  makeRow(1),  makeRow(2),  makeRow(3),  makeRow(4),
                                             makeRow(5),  makeRow(6),  makeRow(7),  makeRow(8),  makeRow(9),
                                             makeRow(10), makeRow(11), makeRow(12), makeRow(13), makeRow(14)};

std::uint32_t lookupOid(char* name, std::uint32_t nameCapacity, const char* dottedText, const OidRow** row)
{
    if (name && nameCapacity != 0) name[0] = '\0';
    if (dottedText == nullptr) return 0;

    // The chain is short, as deep as the tree; it is joined only when the row was found.
    constexpr std::uint32_t depthMax = 16;
    const OidRow* chain[depthMax];
    std::uint32_t depth = 0;
    std::string_view remaining = dottedText;
    const OidRow* rows = OidTable;
    std::uint32_t count = OID_ROOT_COUNT;
    for (;;) {
        const OidRow* const found =
            std::find_if(rows, rows + count, [&](const OidRow& r) { return startsWithComponents(remaining, r.arc); });
        if (found == rows + count || depth == depthMax) return 0;
        chain[depth++] = found;
        const std::size_t arcLength = std::strlen(found->arc);
        if (remaining.size() == arcLength) break;
        if (remaining.size() <= arcLength + 1 || found->childCount == 0) return 0;
        remaining.remove_prefix(arcLength + 1);
        rows = found->children;
        count = found->childCount;
    }

    std::uint32_t length = 0;
    const auto append = [&](std::string_view text) {
        // Room for the terminator is kept; what lies beyond the capacity is only counted.
        for (const char character : text) {
            if (name && length + 1 < nameCapacity) name[length] = character;
            ++length;
        }
        if (name && nameCapacity != 0) name[std::min(length, nameCapacity - 1)] = '\0';
    };
    for (std::uint32_t i = 0; i < depth; ++i) {
        if (i != 0) append("-");
        append(chain[i]->shortName ? chain[i]->shortName : chain[i]->longName ? chain[i]->longName : "UDF");
    }
    if (row) *row = chain[depth - 1];
    return length;
}

} // namespace toolbelt
