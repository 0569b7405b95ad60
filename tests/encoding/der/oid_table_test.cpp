#include "crypto/encoding/oid_table.h"

#include <gtest/gtest.h>

#include "tests/support/vectors.h"

namespace toolbelt {
namespace {

TEST(OidTable, HoldsTheRowsOfTheVectors)
{
    for (const test::Record& record : test::readVectors("oid-rows.txt")) {
        SCOPED_TRACE(record.where);
        for (const std::string& oid : record.list("absent"))
            EXPECT_EQ(lookupOid(nullptr, 0, oid.c_str(), nullptr), 0u) << oid;
        for (const std::string& line : record.list("row")) {
            const std::size_t space = line.find(' ');
            const OidRow* row = nullptr;
            ASSERT_NE(lookupOid(nullptr, 0, line.substr(0, space).c_str(), &row), 0u) << line;
            const std::string codes = std::to_string(row->publicKey) + " " + std::to_string(row->digest);
            EXPECT_EQ(row->longName + (" " + codes), line.substr(space + 1));
            EXPECT_EQ(row->reserved1 & row->reserved2, OID_NONE);
        }
    }
}

// Looks up every row of the tree by its whole text, and returns how many there are.
std::size_t lookUpAll(const OidRow* rows, std::uint32_t count, const std::string& above, const std::string& names)
{
    std::size_t total = count;
    for (const OidRow* r = rows; r != rows + count; ++r) {
        const std::string dotted = above + r->arc, name = names + (r->shortName ? r->shortName : r->longName);
        const OidRow* found = nullptr;
        char chain[200];
        EXPECT_EQ(lookupOid(chain, sizeof chain, dotted.c_str(), &found), name.size()) << dotted;
        EXPECT_EQ(found, r) << dotted;
        EXPECT_EQ(chain, name);
        total += lookUpAll(r->children, r->childCount, dotted + ".", name + "-");
    }
    return total;
}

TEST(OidTable, EachOfItsRowsIsFoundByItsTextAndNamed)
{
    EXPECT_EQ(std::size(OidTable), 15u);
    EXPECT_EQ(lookUpAll(OidTable, OID_ROOT_COUNT, "", ""), 256u);

    const std::string whole = "pkcs-pkcs-1-rsaEncryption";
    for (const std::uint32_t capacity : {0u, 1u, 5u, 25u, 26u, 40u}) {
        std::string name(41, '#'), expected = capacity ? whole.substr(0, capacity - 1) + '\0' : "";
        EXPECT_EQ(lookupOid(name.data(), capacity, "1.2.840.113549.1.1.1", nullptr), whole.size());
        expected.resize(41, '#');
        EXPECT_EQ(name, expected) << capacity;
    }
    char name[8] = "before";
    EXPECT_EQ(lookupOid(name, sizeof name, ("2.5.4.3" + std::string(1 << 20, '3')).c_str(), nullptr), 0u);
    EXPECT_STREQ(name, "");
    EXPECT_EQ(lookupOid(nullptr, 0, nullptr, nullptr), 0u);
}

} // namespace
} // namespace toolbelt
