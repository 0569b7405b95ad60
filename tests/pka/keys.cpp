#include "tests/pka/keys.h"

#include <bit>
#include <map>

namespace toolbelt::test {
namespace {

void strip(Bytes& magnitude)
{
    magnitude.erase(magnitude.begin(), std::find_if(magnitude.begin(), magnitude.end(), [](auto b) { return b != 0; }));
}

} // namespace

const RsaNumbers& rsaKey(const std::string& name)
{
    static const std::map<std::string, RsaNumbers> keys = [] {
        std::map<std::string, RsaNumbers> read;
        for (const Record& r : readVectors("keys/rsa-private.txt")) {
            read[r.get("key")] = {r.number("key-bits"), r.bytes("n"),  r.bytes("e"),  r.bytes("d"),   r.bytes("p"),
                                  r.bytes("q"),         r.bytes("dp"), r.bytes("dq"), r.bytes("qinv")};
            EXPECT_EQ(r.unread(), std::vector<std::string>());
        }
        return read;
    }();
    return keys.at(name);
}

FieldNumbers fieldNumbers(const Record& record)
{
    return {record.bytes("p"), record.has("q") ? record.bytes("q") : Bytes(), record.bytes("g"), record.bytes("y"),
            record.bytes("x")};
}

const FieldNumbers& dsaNumbers(const std::string& name)
{
    static const std::map<std::string, FieldNumbers> keys = [] {
        std::map<std::string, FieldNumbers> read;
        for (const Record& record : readVectors("keys/dsa.txt"))
            if (record.has("p")) read[record.get("domain")] = fieldNumbers(record);
        return read;
    }();
    return keys.at(name);
}

const FieldNumbers& elgamalNumbers()
{
    static const FieldNumbers numbers = [] {
        for (const Record& record : readVectors("keys/elgamal.txt"))
            if (record.bytes("p").size() == 64) return fieldNumbers(record);
        throw std::runtime_error("no such key");
    }();
    return numbers;
}

Bytes join(std::initializer_list<Bytes> parts)
{
    Bytes whole;
    for (const Bytes& part : parts) whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

Bytes padded(Bytes number, std::size_t size)
{
    number.insert(number.begin(), size - std::min(size, number.size()), 0);
    return number;
}

Bytes prefixed(Bytes magnitude, std::size_t size)
{
    strip(magnitude);
    const std::size_t bits = magnitude.empty() ? 0 : magnitude.size() * 8 - std::countl_zero(magnitude[0]);
    magnitude.insert(magnitude.begin(), {static_cast<std::uint8_t>(bits >> 8), static_cast<std::uint8_t>(bits)});
    magnitude.resize(std::max(size, magnitude.size()));
    return magnitude;
}

Bytes derElement(std::uint8_t tag, const Bytes& content)
{
    const std::size_t size = content.size();
    const auto low = static_cast<std::uint8_t>(size), high = static_cast<std::uint8_t>(size >> 8);
    return join({{tag}, size < 0x80 ? Bytes{low} : size < 0x100 ? Bytes{0x81, low} : Bytes{0x82, high, low}, content});
}

Bytes derIntegers(std::initializer_list<Bytes> magnitudes)
{
    Bytes all;
    for (Bytes magnitude : magnitudes) {
        strip(magnitude);
        if (magnitude.empty() || magnitude[0] >= 0x80) magnitude.insert(magnitude.begin(), 0);
        all = join({all, derElement(2, magnitude)});
    }
    return all;
}

Bytes bytesOf(const BigNum& number)
{
    Bytes bytes((bnBitLength(number) + 7) / 8);
    bnExport(bytes.data(), sizeOf(bytes), number);
    return bytes;
}

Key fromBlob(BlobFactory factory, const Bytes& blob)
{
    const Bytes exact(blob);
    return Key(factory(exact.data(), sizeOf(exact)));
}

Key fromDer(DerFactory factory, const Bytes& der, Status expected)
{
    DerElement element;
    EXPECT_EQ(parseElement(element, der.data(), sizeOf(der)), STATUS_OK);
    cPKA* made = nullptr;
    EXPECT_EQ(factory(&made, element), expected) << toHex(der);
    EXPECT_EQ(expected == STATUS_OK, made != nullptr);
    return Key(made);
}

Key publicHalf(cPKA& key)
{
    cPKA* made = nullptr;
    EXPECT_EQ(key.makePublic(&made), STATUS_OK);
    return Key(made);
}

Bytes run(cPKA& key, OutputSlot slot, const Bytes& input, Status expected)
{
    const Bytes exact(input);
    Bytes output(8192, 0xA5);
    std::uint32_t length = sizeOf(output);
    EXPECT_EQ((key.*slot)(output.data(), &length, exact.data(), sizeOf(exact)), expected);
    return slice(output, 0, length);
}

Bytes run(cPKA& key, ExportSlot slot)
{
    std::uint32_t length = 0;
    EXPECT_EQ((key.*slot)(nullptr, &length), STATUS_BUFFER_TOO_SMALL);
    const std::uint32_t needed = length;
    Bytes output(needed + 1, 0xA5);
    EXPECT_EQ((key.*slot)(output.data(), &--length), STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(output, Bytes(needed + 1, 0xA5));
    EXPECT_EQ((key.*slot)(output.data(), &++length), STATUS_OK); // the size stored, and a byte more
    EXPECT_EQ(length, needed);
    EXPECT_EQ(output.back(), 0xA5);
    output.pop_back();
    return output;
}

Status verifyDer(cPKA& key, Bytes signature, const Bytes& digest)
{
    return key.verifyDer(signature.data(), sizeOf(signature), digest.data(), sizeOf(digest));
}

Status verifyPrefixed(cPKA& key, Bytes signature, const Bytes& digest)
{
    return key.verifyPrefixed(signature.data(), sizeOf(signature), digest.data(), sizeOf(digest));
}

} // namespace toolbelt::test
