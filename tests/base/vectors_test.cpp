#include "tests/support/vectors.h"

#include <gtest/gtest.h>

namespace toolbelt::test {
namespace {

TEST(Vectors, RecordsSayWhatIsMissingAndWhatWasNotRead)
{
    const auto records = readVectors("digests.txt");
    const Record& first = records.front();
    EXPECT_EQ(first.kind(), "digest");
    EXPECT_EQ(first.get("digest"), "MD5");
    EXPECT_EQ(first.bytes("value").size(), 16u);
    EXPECT_THROW(first.get("no such name"), std::runtime_error);
    EXPECT_EQ(first.unread({"bytes"}).size(), 1u); // the input
    EXPECT_TRUE(first.message("input").empty());
    EXPECT_TRUE(first.unread({"bytes"}).empty());

    Record record;
    for (const char* text : {"12", "12x", "-1", "", " 1"}) record.add("n" + std::string(text), text);
    record.add("twice", "1");
    record.add("twice", "1");
    EXPECT_EQ(record.number("n12"), 12u);
    for (const char* name : {"n12x", "n-1", "n", "n 1", "twice"})
        EXPECT_THROW(record.number(name), std::runtime_error) << name;
    EXPECT_EQ(record.list("twice").size(), 2u);

    EXPECT_THROW(readVectors("no such file"), std::runtime_error);
    EXPECT_THROW(fromHex("0"), std::runtime_error);
    EXPECT_THROW(fromHex("0g"), std::runtime_error);
    EXPECT_EQ(toHex(fromHex("00fF")), "00ff");
}

} // namespace
} // namespace toolbelt::test
