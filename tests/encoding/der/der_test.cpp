// The readers and writers of tests/vectors/der.txt: its cases, depth, the present, and elements in a buffer.
#include "crypto/encoding/der.h"

#include <gtest/gtest.h>

#include "tests/support/vectors.h"

namespace toolbelt {
namespace {

using test::Bytes;
using test::fromHex;
using test::sizeOf;
using test::toHex;

std::string text(std::int64_t value)
{
    return std::to_string(value);
}
std::string text(const DerTime& t)
{
    char buffer[80];
    std::snprintf(buffer, sizeof buffer, "%d-%02d-%02d %02d:%02d:%02d", t.year, t.month, t.day, t.hour, t.minute,
                  t.second);
    return buffer;
}

// What a reader gives, as text, and a status that it fails with. data is a block of exactly the size that it is told.
std::string read(const std::string& reader, const Bytes& data, const std::string& expectedTag)
{
    static AlgorithmIdentifier algorithm; // read again and again
    static OidRecord oid;
    static NameList list;
    DerElement e;
    const std::uint8_t* next = data.data();
    std::uint32_t left = sizeOf(data);
    Status status = STATUS_OK;
    std::string result;
    if (reader == "element") {
        status = parseElement(e, next, left, &next, &left, expectedTag == "any" ? DER_ANY : std::stoi(expectedTag));
        const auto tag = static_cast<std::uint8_t>(e.tag);
        result = toHex(&tag, 1) + " content " + text(e.contentLength) + " total " + text(e.totalLength) +
                 (e.indefinite ? " indefinite" : "") + (isContextTag(e) ? " context " + text(contextTagNumber(e)) : "");
    } else if (reader == "bit string") {
        DerBitString bits;
        status = readBitString(bits, next, left, &next, &left);
        result = text(bits.unusedBits) + " " + toHex(bits.element.content, bits.element.contentLength);
    } else if (reader == "small integer") {
        std::uint32_t value = 99;
        status = readInteger(e, next, left, &next, &left);
        const bool cut = readSmallInteger(e, &value) == STATUS_BUFFER_TOO_SMALL;
        result = text(value) + (cut ? " cut" : "");
    } else if (reader == "number") {
        BigNum number;
        status = readBigNum(number, &next, &left);
        Bytes octets((bnBitLength(number) + 7) / 8);
        bnExport(octets.data(), sizeOf(octets), number);
        result = toHex(octets) + " left " + text(left);
    } else if (reader == "identifier") {
        status = readOid(oid, next, left, &next, &left);
        result = oid.text ? oid.text : "no text";
    } else if (reader == "algorithm") {
        status = readAlgorithmIdentifier(algorithm, next, left, &next, &left);
        EXPECT_EQ(algorithm.row != nullptr, status == STATUS_OK);
        EXPECT_FALSE(algorithm.element.start == nullptr && algorithm.oid.text) << "an earlier text";
        result = (status ? "" : algorithm.row->longName) + (" " + text(algorithm.parameters.totalLength));
    } else if (reader == "validity") {
        DerValidity validity;
        status = readValidity(validity, next, left, &next, &left);
        result = text(validity.notBefore) + " to " + text(validity.notAfter);
    } else {
        EXPECT_EQ(reader, "name");
        status = readName(list, next, left, &next, &left);
        EXPECT_TRUE(status == STATUS_OK || list.head == nullptr);
        for (const NameAttribute* node = list.head; node; node = node->next)
            result += (result.empty() ? "" : " ") + std::string(node->oid) + " " + text(node->tag) + " " +
                      std::string(node->value, node->valueLength) + ";";
    }
    EXPECT_EQ(next, data.data() + data.size() - left);
    EXPECT_TRUE(status == STATUS_OK || status == DER_E_TAG || left == data.size()) << "a failure moves on";
    return status ? "status " + text(status) : result;
}

std::string time(const std::string& tag, const std::string& digits)
{
    DerElement e;
    e.tag = static_cast<std::uint32_t>(std::stoul(tag));
    e.content = reinterpret_cast<const std::uint8_t*>(digits.data());
    e.contentLength = static_cast<std::uint32_t>(digits.size());
    DerTime t;
    const Status status = readTime(t, e);
    return status ? "status " + text(status) : text(t);
}

// Which of the seconds around those expected lie within a validity that begins and ends at the moment.
std::string moment(const std::string& digits, const std::string& expected)
{
    const std::string der = "\x30\x22\x18\x0f" + digits + "\x18\x0f" + digits;
    DerValidity v;
    EXPECT_EQ(readValidity(v, reinterpret_cast<const std::uint8_t*>(der.data()), 36), STATUS_OK);
    std::string found;
    for (const int difference : {-1, 0, 1}) {
        const std::int64_t seconds = std::stoll(expected) + difference;
        if (seconds != 0 && isTimeValid(v, seconds)) found += text(seconds); // 0 would mean now
    }
    return found;
}

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

// The octets that a writer makes of the number, or of the magnitude with that many octets at least.
std::string write(const std::string& writer, const std::string& first, const std::string& second)
{
    DerElement element;
    if (writer == "number") {
        const Bytes magnitude = fromHex(first);
        BigNum number;
        EXPECT_EQ(bnImport(number, magnitude.data(), sizeOf(magnitude)), STATUS_OK);
        const auto fill = [&] { return writeBigNum(element, number); };
        const std::uint32_t total = prepareBigNum(element, number, static_cast<std::uint32_t>(std::stoul(second)));
        const std::string result = written(total, element, fill);
        EXPECT_EQ(bnSetBit(number, 8 * element.contentLength), STATUS_OK);
        EXPECT_EQ(fill(), DER_E_LIMIT) << "it grew since it was measured";
        return result;
    }
    const auto value = static_cast<std::uint32_t>(std::stoul(first));
    if (writer == "header") {
        Bytes header(headerLength(value, DER_CONSTRUCTED_SEQUENCE));
        EXPECT_EQ(headerLength(value, DER_CONSTRUCTED_SEQUENCE, header.data()), header.size());
        const std::uint64_t total = std::uint64_t{value} + header.size();
        EXPECT_EQ(prepareElement(element, DER_CONSTRUCTED_SEQUENCE, value), total > UINT32_MAX ? 0 : total);
        return toHex(header);
    }
    EXPECT_EQ(writer, "small integer");
    DerSmallInteger small;
    const std::uint32_t total = prepareSmallInteger(small, value);
    return written(total, small.element, [&] { return writeSmallInteger(small); });
}

TEST(Der, ReadsAndWritesWhatTheCasesSay)
{
    for (const test::Record& record : test::readVectors("der.txt")) {
        const std::string& tried = record.get(record.kind());
        for (const std::string& line : record.list("case")) {
            SCOPED_TRACE(record.where + ": " + line);
            const std::size_t bar = line.find('|');
            const std::string input = line.substr(0, bar ? bar - 1 : 0), first = input.substr(0, input.find(' ')),
                              second = input.substr(std::min(first.size() + 1, input.size())),
                              expected = line.substr(std::min(bar + 2, line.size()));
            EXPECT_EQ(record.kind() == "writer" ? write(tried, first, second)
                      : tried == "time"         ? time(first, second)
                      : tried == "moment"       ? moment(first, expected)
                                                : read(tried, fromHex(first), second),
                      expected);
        }
        EXPECT_TRUE(record.unread().empty()) << record.where;
    }
}

TEST(Der, IndefiniteLengthsNestSixtyFourDeepInLinearTime)
{
    const auto parse = [](std::uint32_t depth, std::uint32_t siblings, bool closed = true) {
        Bytes data;
        for (std::uint32_t i = 0; i < depth; ++i) data.insert(data.end(), {0x30, 0x80});
        for (std::uint32_t i = 0; i < siblings; ++i) data.insert(data.end(), {0x30, 0x80, 0x00, 0x00});
        if (closed) data.insert(data.end(), 2 * depth, 0x00);
        DerElement element;
        const Status status = parseElement(element, data.data(), sizeOf(data));
        EXPECT_EQ(element.totalLength, status == STATUS_OK ? data.size() : 0);
        return status;
    };
    EXPECT_EQ(parse(64, 0), STATUS_OK);
    EXPECT_EQ(parse(65, 0), DER_E_MALFORMED);
    EXPECT_EQ(parse(1 << 19, 0, false), DER_E_MALFORMED);
    EXPECT_EQ(parse(63, 250000), STATUS_OK) << "measuring siblings anew at each level would take minutes";
    DerElement element;
    EXPECT_EQ(parseElement(element, nullptr, 10), DER_E_MALFORMED);
}

TEST(Der, ZeroSecondsMeanNow)
{
    DerValidity validity;
    validity.notBefore = {2020, 1, 1, 0, 0, 0};
    validity.notAfter = {9999, 12, 31, 23, 59, 59};
    EXPECT_TRUE(isTimeValid(validity, 0));
    EXPECT_FALSE(isTimeValid(validity, INT64_MAX)) << "a year that no field holds";
    EXPECT_FALSE(isTimeValid(validity, INT64_MIN));
    validity.notAfter = validity.notBefore;
    validity.notBefore.year = 1970;
    EXPECT_FALSE(isTimeValid(validity, 0));
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
