// Published and computed digests, all members; where Keccak-512 departs from the standard by design, what it gives.
#include <gtest/gtest.h>

#include <map>

#include "tests/hash/hash_support.h"
#include "tests/support/tiers.h"

namespace toolbelt {
namespace {

using test::Bytes;
using test::Record;
using test::toHex;

const std::multimap<std::string, std::int32_t> idsByName = {
    {"MD5", 1},      {"SHA-1", 2},        {"RIPEMD-160", 3},       {"SHA-256", 8},      {"SHA-256", 0x80},
    {"SHA-512", 10}, {"Whirlpool", 0x81}, {"Skein-512-512", 0x83}, {"Keccak-512", 0x82}};

// One digest over several updates.
Bytes digestOf(std::int32_t id, const std::vector<Bytes>& updates)
{
    const test::Hash hash = test::makeHash(id);
    for (const Bytes& update : updates) test::updateExactly(*hash, update.data(), update.size());
    return test::finish(*hash);
}

void checkEveryRecord()
{
    // The closed list of messages for which the engine's Keccak-512 is not the standard one.
    std::map<std::string, Bytes> departures;
    for (const Record& record : test::readVectors("keccak-per-update.txt"))
        if (const auto updates = record.list("update"); updates.size() == 1)
            departures[updates[0]] = record.bytes("value");
    EXPECT_EQ(departures.size(), 8u);

    std::map<std::int32_t, std::uint32_t> runs;
    for (const Record& record : test::readVectors("digests.txt")) {
        SCOPED_TRACE(record.where);
        const Bytes message = record.message("input");
        EXPECT_EQ(message.size(), record.number("bytes"));
        const Bytes standard = record.bytes("value");
        const auto [first, last] = idsByName.equal_range(record.get("digest"));
        ASSERT_NE(first, last) << "no digest of this name";
        for (auto entry = first; entry != last; ++entry) {
            const std::int32_t id = entry->second;
            ++runs[id];
            Bytes expected = standard;
            if (id == test::KECCAK_ID && !message.empty() && (message.size() + 1) % 72 <= 1) {
                ASSERT_TRUE(departures.contains(record.get("input")));
                expected = departures[record.get("input")];
                EXPECT_NE(toHex(expected), toHex(standard));
                departures.erase(record.get("input"));
            }
            EXPECT_EQ(toHex(digestOf(id, {message})), toHex(expected));
        }
        EXPECT_EQ(record.unread({"text"}), std::vector<std::string>());
    }
    EXPECT_TRUE(departures.empty()) << "departures that no record asked for";
    for (const HashRow& row : hashRows) EXPECT_GE(runs[row.id], 45u) << row.name;
}

TEST(HashVectors, EveryRecordOnEveryIdOfItsDigestAndOnEveryTier)
{
    for (const std::uint32_t features : test::featureSteps()) {
        SCOPED_TRACE(features);
        const test::FeatureLimit limit(features);
        checkEveryRecord();
    }
}

TEST(HashKeccak, EveryUpdateIsAMessageOfItsOwn)
{
    std::uint32_t severalUpdates = 0;
    for (const Record& record : test::readVectors("keccak-per-update.txt")) {
        SCOPED_TRACE(record.where);
        std::vector<Bytes> updates;
        for (const std::string& notation : record.list("update")) updates.push_back(test::messageOf(notation));
        severalUpdates += updates.size() > 1;
        EXPECT_EQ(toHex(digestOf(test::KECCAK_ID, updates)), toHex(record.bytes("value")));
        EXPECT_EQ(record.unread(), std::vector<std::string>());
    }
    EXPECT_EQ(severalUpdates, 4u);
}

} // namespace
} // namespace toolbelt
