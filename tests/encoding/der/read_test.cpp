// The readers of tests/vectors/der.txt: its cases, depth, and the present.
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

TEST(Der, ReadsWhatTheCasesSay)
{
    for (const test::Record& record : test::readVectors("der.txt")) {
        if (record.has("writer")) continue;
        const std::string reader = record.get("reader");
        for (const std::string& line : record.list("case")) {
            SCOPED_TRACE(record.where + ": " + line);
            const std::size_t bar = line.find('|');
            const std::string input = line.substr(0, bar ? bar - 1 : 0), first = input.substr(0, input.find(' ')),
                              second = input.substr(std::min(first.size() + 1, input.size())),
                              expected = line.substr(std::min(bar + 2, line.size()));
            EXPECT_EQ(reader == "time"     ? time(first, second)
                      : reader == "moment" ? moment(first, expected)
                                           : read(reader, fromHex(first), second),
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

} // namespace
} // namespace toolbelt
