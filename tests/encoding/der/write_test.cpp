#include "crypto/encoding/der.h"

#include <gtest/gtest.h>

#include "tests/support/vectors.h"

namespace toolbelt {
namespace {

using test::Bytes;
using test::toHex;

// The element, placed at the start of a buffer of its size and filled in, as hexadecimal.
template <typename Write>
std::string written(std::uint32_t total, DerElement& element, Write write)
{
    Bytes buffer(total);
    EXPECT_EQ(write(), DER_E_LIMIT) << "not placed yet";
    EXPECT_EQ(placeElement(element, buffer.data(), total, nullptr), 2u);
    EXPECT_EQ(write(), STATUS_OK);
    return toHex(buffer);
}

TEST(DerWrite, HeadersAndIntegersAreThoseOfTheCases)
{
    for (const test::Record& record : test::readVectors("der.txt")) {
        if (record.has("reader")) continue;
        const std::string writer = record.get("writer");
        for (const std::string& line : record.list("case")) {
            SCOPED_TRACE(record.where + ": " + line);
            const std::string expected = line.substr(line.find('|') + 2);
            DerElement element;
            if (writer == "number") {
                const Bytes magnitude = test::fromHex(line.substr(0, line.find(' ')));
                const auto minimum = static_cast<std::uint32_t>(std::stoul(line.substr(line.find(' '))));
                BigNum number;
                ASSERT_EQ(bnImport(number, magnitude.data(), static_cast<std::uint32_t>(magnitude.size())), STATUS_OK);
                const auto write = [&] { return writeBigNum(element, number); };
                EXPECT_EQ(written(prepareBigNum(element, number, minimum), element, write), expected);
                ASSERT_EQ(bnSetBit(number, 8 * element.contentLength), STATUS_OK);
                EXPECT_EQ(write(), DER_E_LIMIT) << "it grew since it was measured";
                continue;
            }
            const auto value = static_cast<std::uint32_t>(std::stoul(line));
            if (writer == "header") {
                Bytes header(headerLength(value, DER_CONSTRUCTED_SEQUENCE));
                EXPECT_EQ(headerLength(value, DER_CONSTRUCTED_SEQUENCE, header.data()), header.size());
                EXPECT_EQ(toHex(header), expected);
                const std::uint64_t total = std::uint64_t{value} + header.size();
                EXPECT_EQ(prepareElement(element, DER_CONSTRUCTED_SEQUENCE, value), total > UINT32_MAX ? 0 : total);
            } else {
                DerSmallInteger small;
                const std::uint32_t total = prepareSmallInteger(small, value);
                EXPECT_EQ(written(total, small.element, [&] { return writeSmallInteger(small); }), expected);
            }
        }
    }
}

TEST(DerWrite, ElementsAreLaidAtARunningOffset)
{
    // SEQUENCE { INTEGER 128, OCTET STRING, BIT STRING }
    DerElement outer, octets, bits;
    DerSmallInteger small;
    std::uint32_t content = prepareSmallInteger(small, 128);
    content += prepareElement(octets, DER_OCTET_STRING, 2);
    content += prepareBitString(bits, 3);
    Bytes buffer(2 + prepareElement(outer, DER_CONSTRUCTED_SEQUENCE, content), 0xEE);
    const auto capacity = static_cast<std::uint32_t>(buffer.size() - 1); // one octet of each end stays free
    const Bytes value = {7, 8, 9};
    EXPECT_EQ(setContent(octets, value.data(), 2), DER_E_LIMIT) << "not placed yet";
    for (const std::uint32_t tooFar : {2u, capacity, capacity + 1, UINT32_MAX}) {
        std::uint32_t offset = tooFar;
        EXPECT_EQ(placeElement(outer, buffer.data(), capacity, &offset), 0u);
        EXPECT_EQ(offset, tooFar);
    }
    DerElement huge;
    std::uint32_t wrapping = 8; // with the total it makes 2^32
    EXPECT_EQ(prepareElement(huge, DER_OCTET_STRING, UINT32_MAX - 13), UINT32_MAX - 7);
    EXPECT_EQ(placeElement(huge, buffer.data(), capacity, &wrapping), 0u);
    EXPECT_EQ(buffer, Bytes(buffer.size(), 0xEE)) << "a failure writes nothing";

    std::uint32_t offset = 1, inner = 3;
    EXPECT_EQ(placeElement(outer, buffer.data(), capacity, &offset), 2u);
    EXPECT_EQ(offset, capacity) << "behind the content of the element placed";
    EXPECT_EQ(outer.content, buffer.data() + inner);
    EXPECT_EQ(placeElement(small.element, buffer.data(), capacity, &inner), 2u);
    EXPECT_EQ(placeElement(octets, buffer.data(), capacity, &inner), 2u);
    EXPECT_EQ(placeBitString(bits, buffer.data(), capacity, &inner), 2u);
    EXPECT_EQ(inner, offset);
    EXPECT_EQ(writeSmallInteger(small), STATUS_OK);
    EXPECT_EQ(setContent(octets, value.data(), 1), DER_E_LIMIT);
    EXPECT_EQ(setContent(octets, value.data(), 2), STATUS_OK);
    EXPECT_EQ(setContent(bits, value.data(), 3), STATUS_OK);
    EXPECT_EQ(toHex(buffer), "ee300d02018004020708030400070809ee");
    inner = 1;
    EXPECT_EQ(placeBitString(bits, buffer.data(), capacity, &inner), 0u) << "prepared once, placed once";
}

TEST(DerWrite, WithoutAnOffsetTheCapacityIsTheTotal)
{
    for (const std::uint32_t capacity : {3u, 4u, 5u}) {
        DerElement element;
        Bytes buffer(5, 0xEE);
        EXPECT_EQ(prepareElement(element, DER_OCTET_STRING, 2), 4u);
        EXPECT_EQ(placeElement(element, buffer.data(), capacity, nullptr), capacity == 4 ? 2u : 0u);
        EXPECT_EQ(element.content, capacity == 4 ? buffer.data() + 2 : nullptr);
        EXPECT_EQ(toHex(buffer), capacity == 4 ? "0402eeeeee" : "eeeeeeeeee");
    }
    Bytes buffer(4, 0xEE);
    DerElement element;
    EXPECT_EQ(prepareBitString(element, 0), 3u);
    EXPECT_EQ(placeBitString(element, buffer.data(), 3, nullptr), 2u);
    EXPECT_EQ(toHex(buffer), "030100ee");
    EXPECT_EQ(prepareBitString(element, UINT32_MAX), 0u);
    EXPECT_EQ(prepareElement(element, DER_BIT_STRING, 0), 2u);
    EXPECT_EQ(placeBitString(element, buffer.data(), 2, nullptr), 0u) << "no room for the octet of unused bits";
    const Bytes longForm = {0x04, 0x81, 0x01, 0xAA}; // read with a longer header than it would get
    ASSERT_EQ(parseElement(element, longForm.data(), 4), STATUS_OK);
    EXPECT_EQ(placeElement(element, buffer.data(), 4, nullptr), 0u);
}

} // namespace
} // namespace toolbelt
